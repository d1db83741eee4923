#pragma once

// What the disk-image engine tests share: fixture images, an engine on tool
// doubles and recorders of what its blocks and delegate received.

#include "diskimage/KVDiskImage.h"
#include "diskimage/KVDiskImageDelegate.h"
#include "platform/KVMainQueue.h"
#include "platform/KVWorkspaceNotifications.h"
#include "tools/KVPropertyList.h"

#include "KVToolDouble.h"

#include <QTest>

#include <functional>
#include <mutex>

namespace KVDiskImageTest {

// Waits are generous: the machine may be busy.
constexpr int Patience = 30000;

const QString SecretStuff = QStringLiteral("/Volumes/Secret Stuff");
const QString Diaries = QString::fromUtf8("/Volumes/Tagebücher");
const QString NoPath = QStringLiteral("/Volumes/No Path");
const QString SecretImage = QStringLiteral("/Users/someone/Documents/Secret Stuff.sparseimage");

// The images of the fixture, in its order: 0 encrypted at SecretStuff, 1 not
// encrypted, 2 encrypted at Diaries, 3 encrypted but not mounted, 4 without
// devices, 5 without a path (at NoPath), 6 without the encryption flag.
inline QVariantMap infoFixture()
{
    return KVPropertyList::decode(KVToolDouble::readFixture(QStringLiteral("hdiutil/info-several-images.plist")))->toMap();
}

inline QVariantMap fixtureImage(int index)
{
    return infoFixture().value(QStringLiteral("images")).toList().at(index).toMap();
}

inline QByteArray infoOf(const QVariantList &images)
{
    QVariantMap info = infoFixture();
    info.insert(QStringLiteral("images"), images);
    return KVPropertyList::encodeXml(info);
}

inline QByteArray infoWith(std::initializer_list<int> indexes)
{
    QVariantList images;
    for (int index : indexes)
        images.append(fixtureImage(index));
    return infoOf(images);
}

inline QStringList mountPoints(const QList<KVVolumeItemPtr> &volumes)
{
    QStringList points;
    for (const KVVolumeItemPtr &volume : volumes)
        points.append(volume->mountPoint());
    return points;
}

// A diskutil that describes whatever volume it is asked about: the volume's
// UUID is its mount point, so images at different places are different items.
inline void answerForAnyVolume(KVToolDouble &diskutil, const QByteArray &deviceIdentifier = "disk4s2")
{
    diskutil.setScript("sed -e \"s|/Volumes/Secret Stuff|$3|\" -e \"s|5C2E3B2A-6D1F-3A44-9B0E-7F1D2C3B4A59|$3|\" "
                       "-e \"s|<string>disk4s2</string>|<string>" + deviceIdentifier + "</string>|\" '"
                       KV_TEST_FIXTURES "/diskutil/info-image-volume.plist'\n");
}

// What the engine's blocks received. They are called on the worker thread.
class Outcome
{
private:
    struct State
    {
        template<typename F>
        auto locked(F f) const
        {
            std::lock_guard lock(mutex);
            return f(*this);
        }
        void finish(const KVOptionalError &e, bool withLine = false)
        {
            std::lock_guard lock(mutex);
            ++calls;
            error = e;
            wellBehaved = wellBehaved && !KVMainQueue::isMainThread() && !withLine;
        }
        void addLine(const QString &line, bool withError)
        {
            std::lock_guard lock(mutex);
            lines.append(line);
            wellBehaved = wellBehaved && !KVMainQueue::isMainThread() && !withError && calls == 0;
        }
        void setLimits(const std::optional<QVariantMap> &value)
        {
            std::lock_guard lock(mutex);
            limits = value;
        }

        mutable std::mutex mutex;
        int calls = 0;
        KVOptionalError error;
        QStringList lines;
        std::optional<QVariantMap> limits;
        bool wellBehaved = true;
    };
    std::shared_ptr<State> m_state = std::make_shared<State>();

public:
    KVDiskImage::ErrorBlock errorBlock() const
    {
        return [state = m_state](const KVOptionalError &error) { state->finish(error); };
    }
    KVDiskImage::ProgressBlock progressBlock() const
    {
        return [state = m_state](const std::optional<QString> &line, bool finished, const KVOptionalError &error) {
            if (finished)
                state->finish(error, line.has_value());
            else
                state->addLine(line.value_or(QStringLiteral("(no line)")), error.has_value());
        };
    }
    KVDiskImage::LimitsBlock limitsBlock() const
    {
        return [state = m_state](const std::optional<QVariantMap> &limits, const KVOptionalError &error) {
            state->setLimits(limits);
            state->finish(error);
        };
    }

    int calls() const { return m_state->locked([](const State &s) { return s.calls; }); }
    KVOptionalError error() const { return m_state->locked([](const State &s) { return s.error; }); }
    QStringList lines() const { return m_state->locked([](const State &s) { return s.lines; }); }
    std::optional<QVariantMap> limits() const { return m_state->locked([](const State &s) { return s.limits; }); }
    // Every call came on a worker thread, and came well formed.
    bool wellBehaved() const { return m_state->locked([](const State &s) { return s.wellBehaved; }); }
};

class RecordingDelegate : public KVDiskImageDelegate
{
public:
    void mountedDiskImagesDidChange(KVDiskImage *engine, const QList<KVVolumeItemPtr> &volumes) override
    {
        onGuiThreadOnly = onGuiThreadOnly && KVMainQueue::isMainThread();
        listWasCurrent = listWasCurrent && kvSameVolumes(volumes, engine->mountedDiskImages());
        changes.append(mountPoints(volumes));
    }
    void mountedDiskImagesUpdateDidFail(KVDiskImage *, const KVAppError &error) override
    {
        onGuiThreadOnly = onGuiThreadOnly && KVMainQueue::isMainThread();
        failures.append(error);
    }

    QList<QStringList> changes;
    QList<KVAppError> failures;
    bool onGuiThreadOnly = true;
    bool listWasCurrent = true;
};

// An engine with doubles of both tools, listening to notifications of its own.
struct Bench
{
    Bench()
    {
        answerForAnyVolume(diskutil);
        engine = std::make_unique<KVDiskImage>(KVToolPaths{hdiutil.path(), diskutil.path(), QString()}, &workspace);
        engine->setDelegate(&delegate);
    }

    // Waits until everything queued so far has run, and what it posted to the
    // GUI thread has been done.
    void settle()
    {
        auto done = std::make_shared<std::atomic_bool>(false);
        engine->processingQueue().addOperation([done] { KVMainQueue::post([done] { *done = true; }); });
        QVERIFY(QTest::qWaitFor([&] { return done->load(); }, Patience));
    }

    void scan(const QByteArray &info, const std::optional<QString> &filter = std::nullopt)
    {
        hdiutil.setResponse(info);
        engine->updateMountedDiskImages(filter, outcome.errorBlock());
        settle();
    }

    QStringList listed() const { return mountPoints(engine->mountedDiskImages()); }

    KVToolDouble hdiutil{QStringLiteral("hdiutil")};
    KVToolDouble diskutil{QStringLiteral("diskutil")};
    KVWorkspaceNotifications workspace;
    RecordingDelegate delegate;
    std::unique_ptr<KVDiskImage> engine;
    Outcome outcome;
};

// An item of a mounted image, as a scan would have made it.
inline KVVolumeItemPtr imageItem(const QByteArray &deviceIdentifier = "disk4s2")
{
    KVToolDouble diskutil;
    answerForAnyVolume(diskutil, deviceIdentifier);
    return KVVolumeItem::create({{QStringLiteral("hdiutilInfo"), fixtureImage(0)}}, nullptr,
                                KVToolPaths{QString(), diskutil.path(), QString()});
}

} // namespace KVDiskImageTest
