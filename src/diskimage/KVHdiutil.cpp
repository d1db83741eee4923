#include "KVHdiutil.h"

#include "model/KVLocalization.h"
#include "tools/KVToolRun.h"

namespace {

QString abnormalEnd()
{
    return kvLocalized("hdiutil ended abnormally.");
}

QString notPropertyList()
{
    return kvLocalized("hdiutil output is not a property list.");
}

// hdiutil ends a failure with its own summary ("hdiutil: attach failed - ..."),
// in the user's language, so that line itself becomes the message. Only one
// trailing empty piece is dropped: output that is nothing but a newline or
// nothing at all has no such line, and then nothing is recognised.
void failWithLastLine(KVToolRun &run, const QString &text)
{
    QStringList pieces = text.split(u'\n');
    if (pieces.last().isEmpty())
        pieces.removeLast();
    if (!pieces.isEmpty())
        run.fail(kvLocalized(pieces.last()), KVAppErrorCode::ToolMessage);
}

} // namespace

KVHdiutil::KVHdiutil(QString program)
    : m_program(std::move(program))
{
}

KVHdiutil::PropertyList KVHdiutil::info() const
{
    KVToolRun run(m_program, {QStringLiteral("info"), QStringLiteral("-plist")},
                  kvLocalized("Error executing hdiutil command"), abnormalEnd());
    PropertyList result;
    result.error = run.runWholeOutput([&](const QByteArray &output) {
        result.value = run.decodePropertyList(output, notPropertyList());
    });
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

    KVToolRun run(m_program, arguments, kvLocalized("Mounting Disk Image failed"), abnormalEnd());
    run.passPassword(std::move(password));
    return run.runWholeOutput([&run](const QByteArray &output) {
        const QString text = QString::fromUtf8(output);
        if (!text.contains(u"DIHLDiskImageAttach() returned"))
            return;
        // Plain substring tests in this order: any code that begins with a 2
        // (22, say) reads as a missing image.
        if (text.contains(u"DIHLDiskImageAttach() returned 80"))
            run.fail(kvLocalized("Wrong Password"), KVAppErrorCode::WrongPassword);
        else if (text.contains(u"DIHLDiskImageAttach() returned 2"))
            run.fail(kvLocalized("Disk Image doesn't exist"), KVAppErrorCode::NotFound);
        else if (text.contains(u"DIHLDiskImageAttach() returned 112"))
            run.fail(kvLocalized("Invalid Mount Path"), KVAppErrorCode::InvalidMountPath);
        else if (text.contains(u"DIHLDiskImageAttach() returned 16"))
            run.fail(kvLocalized("Resource busy, Disk Image may already be mounted."), KVAppErrorCode::ResourceBusy);
        else
            failWithLastLine(run, text);
    });
}

KVOptionalError KVHdiutil::detach(const QString &deviceOrPath, bool force) const
{
    QStringList arguments{QStringLiteral("detach"), QStringLiteral("-verbose")};
    if (force)
        arguments << QStringLiteral("-force");
    arguments << deviceOrPath;

    KVToolRun run(m_program, arguments, kvLocalized("Unmount failed"), abnormalEnd());
    return run.runWholeOutput([&run](const QByteArray &output) {
        const QString text = QString::fromUtf8(output);
        // Success needs both words: a device that carried no mounted file
        // system is only "ejected.", and that counts as a failure.
        if (text.contains(u"unmounted.") && text.contains(u"ejected."))
            return;
        if (text.contains(u"hdiutil: detach: result: 2"))
            run.fail(kvLocalized("Disk Volume point doesn't exist"), KVAppErrorCode::NotFound);
        else if (!text.contains(u"hdiutil: couldn't unmount"))
            failWithLastLine(run, text);
        else
            run.fail(kvLocalized("Resource busy, Volume may still be used."), KVAppErrorCode::ResourceBusy);
    });
}

KVOptionalError KVHdiutil::create(const QString &pathWithoutExtension, std::optional<float> sizeInM,
                                  const QString &volumeName, const QString &encryption, bool attach, KVSecret password,
                                  const LineHandler &onLine) const
{
    const QString title = kvLocalized("Disk Image creation failed");
    if (pathWithoutExtension.isEmpty())
        return KVAppError(KVAppErrorCode::NoPath, title, kvLocalized("There is no path parameter"));

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
        // The creation routine's result names the cause better than the
        // summary line that follows it, so it replaces anything found before.
        if (line.contains(u"DIHLDiskImageCreate() returned")) {
            if (line.contains(u"DIHLDiskImageCreate() returned 2"))
                run.fail(kvLocalized("File or directory doesn't exist"), KVAppErrorCode::NotFound);
            else if (line.contains(u"DIHLDiskImageCreate() returned 17"))
                run.fail(kvLocalized("File already exists."), KVAppErrorCode::FileExists);
        }
        if (line.contains(u"create failed") && !run.hasFailed())
            run.fail(kvLocalized(line), KVAppErrorCode::ToolMessage);
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
                  kvLocalized("Changing password failed"), abnormalEnd());
    run.setStandardInput(std::move(passwords));
    return run.runWholeOutput([&run](const QByteArray &output) {
        const QString text = QString::fromUtf8(output);
        if (!text.contains(u"chpass failed"))
            return;
        if (text.contains(u"hdiutil: chpass: result: 80"))
            run.fail(kvLocalized("Wrong Password"), KVAppErrorCode::WrongPassword);
        else if (!text.contains(u"hdiutil: chpass: result: 2"))
            failWithLastLine(run, text);
        else
            run.fail(kvLocalized("Disk Image doesn't exist"), KVAppErrorCode::NotFound);
    });
}

KVOptionalError KVHdiutil::eraseKeys(const QString &imagePath) const
{
    KVToolRun run(m_program, {QStringLiteral("erasekeys"), imagePath}, kvLocalized("Erasing Keys failed"),
                  abnormalEnd());
    return run.runWholeOutput([&run](const QByteArray &output) {
        const QString text = QString::fromUtf8(output);
        if (!text.contains(u"erasekeys failed"))
            return;
        if (text.contains(u"hdiutil: erasekeys: result: 2"))
            run.fail(kvLocalized("Disk Image doesn't exist"), KVAppErrorCode::NotFound);
        else
            failWithLastLine(run, text);
    });
}

KVHdiutil::PropertyList KVHdiutil::limits(const QString &imagePath, KVSecret password) const
{
    KVToolRun run(m_program, {QStringLiteral("resize"), QStringLiteral("-limits"), QStringLiteral("-plist"), imagePath},
                  kvLocalized("Acquiring limits information failed"), abnormalEnd());
    run.passPassword(std::move(password));
    PropertyList result;
    result.error = run.runWholeOutput([&](const QByteArray &output) {
        // resize reports a failure as one sentence that ends with the error
        // number in parentheses.
        const QString text = QString::fromUtf8(output).trimmed();
        if (!text.contains(u"resize: failed")) {
            result.value = run.decodePropertyList(output, notPropertyList());
            return;
        }
        if (text.endsWith(u"(80)"))
            run.fail(kvLocalized("Wrong Password"), KVAppErrorCode::WrongPassword);
        else if (text.endsWith(u"(2)"))
            run.fail(kvLocalized("Disk Image doesn't exist"), KVAppErrorCode::NotFound);
        else
            run.fail(kvLocalized(text), KVAppErrorCode::ToolMessage);
    });
    return result;
}

KVOptionalError KVHdiutil::resize(const QString &imagePath, std::optional<float> sizeInM, KVSecret password) const
{
    QStringList arguments{QStringLiteral("resize")};
    if (sizeInM)
        arguments << QStringLiteral("-size") << megabytes(*sizeInM);
    arguments << imagePath;

    KVToolRun run(m_program, arguments, kvLocalized("Resizing failed"), abnormalEnd());
    // At the third place like every password, which puts it between "-size"
    // and its value; hdiutil reads its options that way too.
    run.passPassword(std::move(password));
    return run.runWholeOutput([&run](const QByteArray &output) {
        const QString text = QString::fromUtf8(output).trimmed();
        if (!text.contains(u"resize: failed"))
            return;
        if (text.endsWith(u"(80)"))
            run.fail(kvLocalized("Wrong Password"), KVAppErrorCode::WrongPassword);
        else if (text.endsWith(u"(2)"))
            run.fail(kvLocalized("Disk Image doesn't exist"), KVAppErrorCode::NotFound);
        else if (text.endsWith(u"(35)"))
            run.fail(kvLocalized("Disk Image is mounted"), KVAppErrorCode::ImageMounted);
        else
            run.fail(kvLocalized(text), KVAppErrorCode::ToolMessage);
    });
}

KVOptionalError KVHdiutil::compact(const QString &imagePath, KVSecret password) const
{
    KVToolRun run(m_program,
                  {QStringLiteral("compact"), QStringLiteral("-batteryallowed"), QStringLiteral("-verbose"), imagePath},
                  kvLocalized("Compact failed"), abnormalEnd());
    run.passPassword(std::move(password), 1);
    return run.runWholeOutput([&run](const QByteArray &output) {
        const QString text = QString::fromUtf8(output);
        if (!text.contains(u"compact failed"))
            return;
        if (text.contains(u"hdiutil: compact: result: 80"))
            run.fail(kvLocalized("Wrong Password"), KVAppErrorCode::WrongPassword);
        else if (text.contains(u"hdiutil: compact: result: 2"))
            run.fail(kvLocalized("Disk Image doesn't exist"), KVAppErrorCode::NotFound);
        else if (!text.contains(u"hdiutil: compact: result: 35"))
            failWithLastLine(run, text);
        else
            run.fail(kvLocalized("Disk Image is mounted"), KVAppErrorCode::ImageMounted);
    });
}

QString KVHdiutil::megabytes(float sizeInM)
{
    return QString::number(double(sizeInM), 'g', 7) + u'm';
}
