#include "KVHdiutilOutput.h"

#include "model/KVLocalization.h"
#include "tools/KVToolRun.h"

#include <QStringList>

namespace KVHdiutilOutput {

namespace {

QString notPropertyList()
{
    return KVLocalization::tr("hdiutil output is not a property list.");
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

// resize reports a failure as one sentence that ends with the error number in
// parentheses. True when the output was such a failure (and it was recorded).
bool judgeResizeFailure(KVToolRun &run, const QString &text, bool mountedIsKnown)
{
    if (!text.contains(u"resize: failed"))
        return false;
    if (text.endsWith(u"(80)"))
        run.fail(KVLocalization::tr("Wrong Password"), KVAppErrorCode::WrongPassword);
    else if (text.endsWith(u"(2)"))
        run.fail(KVLocalization::tr("Disk Image doesn't exist"), KVAppErrorCode::NotFound);
    else if (mountedIsKnown && text.endsWith(u"(35)"))
        run.fail(KVLocalization::tr("Disk Image is mounted"), KVAppErrorCode::ImageMounted);
    else
        run.fail(kvLocalized(text), KVAppErrorCode::ToolMessage);
    return true;
}

} // namespace

std::optional<QVariant> judgeInfo(KVToolRun &run, const QByteArray &output)
{
    return run.decodePropertyList(output, notPropertyList());
}

std::optional<QVariant> judgeLimits(KVToolRun &run, const QByteArray &output)
{
    if (judgeResizeFailure(run, QString::fromUtf8(output).trimmed(), false))
        return std::nullopt;
    return run.decodePropertyList(output, notPropertyList());
}

void judgeAttach(KVToolRun &run, const QByteArray &output)
{
    const QString text = QString::fromUtf8(output);
    if (!text.contains(u"DIHLDiskImageAttach() returned"))
        return;
    // Plain substring tests in this order: any code that begins with a 2
    // (22, say) reads as a missing image.
    if (text.contains(u"DIHLDiskImageAttach() returned 80"))
        run.fail(KVLocalization::tr("Wrong Password"), KVAppErrorCode::WrongPassword);
    else if (text.contains(u"DIHLDiskImageAttach() returned 2"))
        run.fail(KVLocalization::tr("Disk Image doesn't exist"), KVAppErrorCode::NotFound);
    else if (text.contains(u"DIHLDiskImageAttach() returned 112"))
        run.fail(KVLocalization::tr("Invalid Mount Path"), KVAppErrorCode::InvalidMountPath);
    else if (text.contains(u"DIHLDiskImageAttach() returned 16"))
        run.fail(KVLocalization::tr("Resource busy, Disk Image may already be mounted."), KVAppErrorCode::ResourceBusy);
    else
        failWithLastLine(run, text);
}

void judgeDetach(KVToolRun &run, const QByteArray &output)
{
    const QString text = QString::fromUtf8(output);
    // Success needs both words: a device that carried no mounted file
    // system is only "ejected.", and that counts as a failure.
    if (text.contains(u"unmounted.") && text.contains(u"ejected."))
        return;
    if (text.contains(u"hdiutil: detach: result: 2"))
        run.fail(KVLocalization::tr("Disk Volume point doesn't exist"), KVAppErrorCode::NotFound);
    else if (!text.contains(u"hdiutil: couldn't unmount"))
        failWithLastLine(run, text);
    else
        run.fail(KVLocalization::tr("Resource busy, Volume may still be used."), KVAppErrorCode::ResourceBusy);
}

void judgeCreateLine(KVToolRun &run, const QString &line)
{
    // The creation routine's result names the cause better than the
    // summary line that follows it, so it replaces anything found before.
    if (line.contains(u"DIHLDiskImageCreate() returned")) {
        if (line.contains(u"DIHLDiskImageCreate() returned 2"))
            run.fail(KVLocalization::tr("File or directory doesn't exist"), KVAppErrorCode::NotFound);
        else if (line.contains(u"DIHLDiskImageCreate() returned 17"))
            run.fail(KVLocalization::tr("File already exists."), KVAppErrorCode::FileExists);
    }
    if (line.contains(u"create failed") && !run.hasFailed())
        run.fail(kvLocalized(line), KVAppErrorCode::ToolMessage);
}

void judgeChangePassword(KVToolRun &run, const QByteArray &output)
{
    const QString text = QString::fromUtf8(output);
    if (!text.contains(u"chpass failed"))
        return;
    if (text.contains(u"hdiutil: chpass: result: 80"))
        run.fail(KVLocalization::tr("Wrong Password"), KVAppErrorCode::WrongPassword);
    else if (!text.contains(u"hdiutil: chpass: result: 2"))
        failWithLastLine(run, text);
    else
        run.fail(KVLocalization::tr("Disk Image doesn't exist"), KVAppErrorCode::NotFound);
}

void judgeEraseKeys(KVToolRun &run, const QByteArray &output)
{
    const QString text = QString::fromUtf8(output);
    if (!text.contains(u"erasekeys failed"))
        return;
    if (text.contains(u"hdiutil: erasekeys: result: 2"))
        run.fail(KVLocalization::tr("Disk Image doesn't exist"), KVAppErrorCode::NotFound);
    else
        failWithLastLine(run, text);
}

void judgeResize(KVToolRun &run, const QByteArray &output)
{
    judgeResizeFailure(run, QString::fromUtf8(output).trimmed(), true);
}

void judgeCompact(KVToolRun &run, const QByteArray &output)
{
    const QString text = QString::fromUtf8(output);
    if (!text.contains(u"compact failed"))
        return;
    if (text.contains(u"hdiutil: compact: result: 80"))
        run.fail(KVLocalization::tr("Wrong Password"), KVAppErrorCode::WrongPassword);
    else if (text.contains(u"hdiutil: compact: result: 2"))
        run.fail(KVLocalization::tr("Disk Image doesn't exist"), KVAppErrorCode::NotFound);
    else if (!text.contains(u"hdiutil: compact: result: 35"))
        failWithLastLine(run, text);
    else
        run.fail(KVLocalization::tr("Disk Image is mounted"), KVAppErrorCode::ImageMounted);
}

} // namespace KVHdiutilOutput
