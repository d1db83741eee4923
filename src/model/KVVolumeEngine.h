#pragma once

#include "tools/KVToolPaths.h"

#include <QObject>

// What a volume item knows of the engine that made it: where the tools are,
// and whom to tell when its space figures change.
class KVVolumeEngine : public QObject
{
    Q_OBJECT

public:
    explicit KVVolumeEngine(KVToolPaths tools, QObject *parent = nullptr)
        : QObject(parent)
        , m_tools(std::move(tools))
    {
    }

    const KVToolPaths &toolPaths() const { return m_tools; }

    // Called on the GUI thread when one of the engine's items has new space
    // figures: the engine tells its delegate, handing over its whole list.
    virtual void volumeSpaceDidChange() = 0;

private:
    const KVToolPaths m_tools;
};
