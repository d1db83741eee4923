#pragma once

#include <QColor>

// The application's own colours. Each is made once, on first use, and the
// same object is returned afterwards. They are all greys: the hues are kept as
// the artwork states them although a saturation of 0 makes them invisible.
class KVColors
{
public:
    KVColors() = delete;

    // A colour given as hue, saturation and brightness, each from 0 to 1, the
    // way every colour of the application is chosen.
    static QColor fromHsb(float hue, float saturation, float brightness, float alpha = 1.0f);

    static const QColor &kvDarkGrey();
    static const QColor &kvSelectOutline();
    static const QColor &kvWhiteText();
    static const QColor &kvLightGreyText();
    static const QColor &kvDetailViewBackground();
};
