// hdiutil's output as every verb judges it: the same text through each verb's
// table of failure texts, line by line for create, and as the property list
// of "info" and "resize -limits".

#include "diskimage/KVHdiutilOutput.h"
#include "tools/KVLineSplitter.h"
#include "tools/KVToolRun.h"

#include <cstddef>
#include <cstdint>

namespace {

KVToolRun run()
{
    return KVToolRun(QStringLiteral("hdiutil"), {}, QStringLiteral("Title"), QStringLiteral("hdiutil ended abnormally."));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray output(reinterpret_cast<const char *>(data), qsizetype(size));
    for (auto judge : {KVHdiutilOutput::judgeAttach, KVHdiutilOutput::judgeDetach,
                       KVHdiutilOutput::judgeChangePassword, KVHdiutilOutput::judgeEraseKeys,
                       KVHdiutilOutput::judgeResize, KVHdiutilOutput::judgeCompact}) {
        KVToolRun verb = run();
        judge(verb, output);
    }
    for (auto judge : {KVHdiutilOutput::judgeInfo, KVHdiutilOutput::judgeLimits}) {
        KVToolRun verb = run();
        const std::optional<QVariant> value = judge(verb, output);
        if (value.has_value() == verb.hasFailed())
            __builtin_trap();
    }
    KVToolRun create = run();
    KVLineSplitter lines([&create](const QString &line, QStringView) { KVHdiutilOutput::judgeCreateLine(create, line); });
    lines.feed(output);
    return 0;
}
