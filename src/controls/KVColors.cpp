#include "controls/KVColors.h"

QColor KVColors::fromHsb(float hue, float saturation, float brightness, float alpha)
{
    return QColor::fromHsvF(hue, saturation, brightness, alpha);
}

const QColor &KVColors::kvDarkGrey()
{
    static const QColor colour = fromHsb(0.905f, 0.0f, 0.151f);
    return colour;
}

const QColor &KVColors::kvSelectOutline()
{
    static const QColor colour = fromHsb(0.906f, 0.0f, 0.106f);
    return colour;
}

const QColor &KVColors::kvWhiteText()
{
    static const QColor colour = fromHsb(0.906f, 0.0f, 0.84f);
    return colour;
}

const QColor &KVColors::kvLightGreyText()
{
    static const QColor colour = fromHsb(0.905f, 0.0f, 0.475f);
    return colour;
}

const QColor &KVColors::kvDetailViewBackground()
{
    static const QColor colour = fromHsb(0.906f, 0.0f, 0.975f);
    return colour;
}
