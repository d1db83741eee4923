#pragma once

#include <QByteArray>
#include <QString>

#include <initializer_list>

namespace kvlinux {

// What a tool prints. Lines go out at once, unbuffered, because the
// application reads "create" line by line while it runs; errors go to
// standard error (the application reads both through one pipe, in order).
class KVToolOutput
{
public:
    void setVerbose(bool verbose) { m_verbose = verbose; }
    void setPuppetStrings(bool puppetStrings) { m_puppetStrings = puppetStrings; }
    bool isVerbose() const { return m_verbose; }

    void line(const QString &text) const;
    void error(const QString &text) const;
    void verbose(const QString &text) const;
    void data(const QByteArray &bytes) const;

    // A phase of a long operation: "MESSAGE:<text>" for -puppetstrings,
    // the text alone in verbose mode.
    void phase(const QString &text) const;
    // Progress for -puppetstrings; a negative value means "indeterminate".
    void percent(double value) const;

    // hdiutil's "returned N" and "result: N" lines are read by prefix:
    // "returned 2" also matches 28. A number that could be mistaken for one
    // of the recognised ones is printed as 999, hdiutil's internal error,
    // so that the reader falls back to the failure text itself.
    static int unambiguousCode(int code, std::initializer_list<int> recognised);
    // "hdiutil: <verb>: result: N".
    void result(const QString &verb, int code, std::initializer_list<int> recognised) const;

private:
    static void write(int fd, const QByteArray &bytes);

    bool m_verbose = false;
    bool m_puppetStrings = false;
};

} // namespace kvlinux
