#include "KVHdiutil.h"

#include "KVHdiutilOutput.h"
#include "model/KVLocalization.h"
#include "tools/KVToolRun.h"

namespace {

QString abnormalEnd()
{
    return KVLocalization::tr("hdiutil ended abnormally.");
}

} // namespace

KVHdiutil::KVHdiutil(QString program)
    : m_program(std::move(program))
{
}

KVHdiutil::PropertyList KVHdiutil::info() const
{
    KVToolRun run(m_program, {QStringLiteral("info"), QStringLiteral("-plist")},
                  KVLocalization::tr("Error executing hdiutil command"), abnormalEnd());
    PropertyList result;
    result.error = run.runWholeOutput(
        [&](const QByteArray &output) { result.value = KVHdiutilOutput::judgeInfo(run, output); });
    return result;
}

KVOptionalError KVHdiutil::attach(const QString &imagePath, KVSecret password, bool readOnly,
                                  const std::optional<QString> &mountRoot, bool autoOpen) const
{
    QStringList arguments{QStringLiteral("attach"), QStringLiteral("-verbose"), QStringLiteral("-puppetstrings"), imagePath};
    if (readOnly)
        arguments << QStringLiteral("-readonly");
    if (autoOpen)
        arguments << QStringLiteral("-autoopen");
    if (mountRoot)
        arguments << QStringLiteral("-mountroot") << *mountRoot;

    KVToolRun run(m_program, arguments, KVLocalization::tr("Mounting Disk Image failed"), abnormalEnd());
    run.passPassword(std::move(password));
    return run.runWholeOutput([&run](const QByteArray &output) { KVHdiutilOutput::judgeAttach(run, output); });
}

KVOptionalError KVHdiutil::detach(const QString &deviceOrPath, bool force) const
{
    QStringList arguments{QStringLiteral("detach"), QStringLiteral("-verbose")};
    if (force)
        arguments << QStringLiteral("-force");
    arguments << deviceOrPath;

    KVToolRun run(m_program, arguments, KVLocalization::tr("Unmount failed"), abnormalEnd());
    return run.runWholeOutput([&run](const QByteArray &output) { KVHdiutilOutput::judgeDetach(run, output); });
}

KVOptionalError KVHdiutil::create(const QString &pathWithoutExtension, std::optional<float> sizeInM,
                                  const QString &volumeName, const QString &encryption, bool attach, KVSecret password,
                                  const LineHandler &onLine) const
{
    const QString title = KVLocalization::tr("Disk Image creation failed");
    if (pathWithoutExtension.isEmpty())
        return KVAppError(KVAppErrorCode::NoPath, title, KVLocalization::tr("There is no path parameter"));

    QStringList arguments{QStringLiteral("create"), QStringLiteral("-verbose"), QStringLiteral("-puppetstrings"),
                          QStringLiteral("-fs"), QStringLiteral("Journaled HFS+"), QStringLiteral("-type"),
                          QStringLiteral("SPARSE")};
    if (sizeInM)
        arguments << QStringLiteral("-size") << megabytes(*sizeInM);
    if (!volumeName.isEmpty())
        arguments << QStringLiteral("-volname") << volumeName;
    // Anything but AES-128 exactly, no choice included, gets the stronger cipher.
    arguments << QStringLiteral("-encryption")
              << (encryption == u"AES-128" ? QStringLiteral("AES-128") : QStringLiteral("AES-256"));
    if (attach)
        arguments << QStringLiteral("-attach");
    arguments << pathWithoutExtension;

    KVToolRun run(m_program, arguments, title, abnormalEnd());
    run.passPassword(std::move(password));
    return run.runLineStream([&](const QString &line, QStringView) {
        KVHdiutilOutput::judgeCreateLine(run, line);
        onLine(line);
    });
}

KVSecret KVHdiutil::passwordChange(const QString &oldPassword, const QString &newPassword)
{
    return KVSecret::joined(oldPassword, '\0', newPassword);
}

KVOptionalError KVHdiutil::changePassword(const QString &imagePath, KVSecret passwords) const
{
    KVToolRun run(m_program,
                  {QStringLiteral("chpass"), QStringLiteral("-oldstdinpass"), QStringLiteral("-newstdinpass"),
                   QStringLiteral("-verbose"), imagePath},
                  KVLocalization::tr("Changing password failed"), abnormalEnd());
    run.setStandardInput(std::move(passwords));
    return run.runWholeOutput(
        [&run](const QByteArray &output) { KVHdiutilOutput::judgeChangePassword(run, output); });
}

KVOptionalError KVHdiutil::eraseKeys(const QString &imagePath) const
{
    KVToolRun run(m_program, {QStringLiteral("erasekeys"), imagePath}, KVLocalization::tr("Erasing Keys failed"),
                  abnormalEnd());
    return run.runWholeOutput([&run](const QByteArray &output) { KVHdiutilOutput::judgeEraseKeys(run, output); });
}

KVHdiutil::PropertyList KVHdiutil::limits(const QString &imagePath, KVSecret password) const
{
    KVToolRun run(m_program, {QStringLiteral("resize"), QStringLiteral("-limits"), QStringLiteral("-plist"), imagePath},
                  KVLocalization::tr("Acquiring limits information failed"), abnormalEnd());
    run.passPassword(std::move(password));
    PropertyList result;
    result.error = run.runWholeOutput(
        [&](const QByteArray &output) { result.value = KVHdiutilOutput::judgeLimits(run, output); });
    return result;
}

KVOptionalError KVHdiutil::resize(const QString &imagePath, std::optional<float> sizeInM, KVSecret password) const
{
    QStringList arguments{QStringLiteral("resize")};
    if (sizeInM)
        arguments << QStringLiteral("-size") << megabytes(*sizeInM);
    arguments << imagePath;

    KVToolRun run(m_program, arguments, KVLocalization::tr("Resizing failed"), abnormalEnd());
    // At the third place like every password, which puts it between "-size"
    // and its value; hdiutil reads its options that way too.
    run.passPassword(std::move(password));
    return run.runWholeOutput([&run](const QByteArray &output) { KVHdiutilOutput::judgeResize(run, output); });
}

KVOptionalError KVHdiutil::compact(const QString &imagePath, KVSecret password) const
{
    KVToolRun run(m_program,
                  {QStringLiteral("compact"), QStringLiteral("-batteryallowed"), QStringLiteral("-verbose"), imagePath},
                  KVLocalization::tr("Compact failed"), abnormalEnd());
    run.passPassword(std::move(password), 1);
    return run.runWholeOutput([&run](const QByteArray &output) { KVHdiutilOutput::judgeCompact(run, output); });
}

QString KVHdiutil::megabytes(float sizeInM)
{
    return QString::number(double(sizeInM), 'g', 7) + u'm';
}
