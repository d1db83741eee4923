#pragma once

#include <QObject>

// What a volume item knows of the engine that made it: whom to tell when its
// space figures change.
class KVVolumeEngine : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    // Called on the GUI thread when one of the engine's items has new space
    // figures: the engine tells its delegate, handing over its whole list.
    virtual void volumeSpaceDidChange() = 0;
};
