#pragma once

#include "model/KVAppError.h"
#include "tools/KVSecret.h"

#include <QStringList>
#include <QVariant>

#include <functional>
#include <optional>

// hdiutil's command lines, and the texts by which it reports failures.
//
// Every function runs the tool once, on the calling thread (an engine's worker
// thread), and judges the run. A password always travels on standard input.
// hdiutil's success is told by what it prints, so each verb below recognises
// its own failure texts, in the order given; the first that matches decides.
class KVHdiutil
{
public:
    explicit KVHdiutil(QString program);

    struct PropertyList
    {
        std::optional<QVariant> value; // absent when the output did not decode
        KVOptionalError error;
    };
    using LineHandler = std::function<void(const QString &line)>;

    // "info -plist": what is attached.
    PropertyList info() const;
    // `mountRoot`: the folder under which the volume is to be mounted, if any.
    KVOptionalError attach(const QString &imagePath, KVSecret password, bool readOnly,
                           const std::optional<QString> &mountRoot, bool autoOpen) const;
    KVOptionalError detach(const QString &deviceOrPath, bool force) const;
    // A growable encrypted image at `pathWithoutExtension` (hdiutil adds
    // ".sparseimage"). Every complete line of progress goes to `onLine`.
    KVOptionalError create(const QString &pathWithoutExtension, std::optional<float> sizeInM, const QString &volumeName,
                           const QString &encryption, bool attach, KVSecret password, const LineHandler &onLine) const;
    // `passwords` as made by passwordChange().
    KVOptionalError changePassword(const QString &imagePath, KVSecret passwords) const;
    KVOptionalError eraseKeys(const QString &imagePath) const;
    // "resize -limits -plist": the image's size limits, in 512-byte sectors.
    PropertyList limits(const QString &imagePath, KVSecret password) const;
    KVOptionalError resize(const QString &imagePath, std::optional<float> sizeInM, KVSecret password) const;
    KVOptionalError compact(const QString &imagePath, KVSecret password) const;

    // chpass reads the old and the new password from one stream, separated by a NUL.
    static KVSecret passwordChange(const QString &oldPassword, const QString &newPassword);
    // hdiutil takes sizes as megabytes with an "m"; a single-precision number
    // reads as Foundation prints it (up to seven significant digits).
    static QString megabytes(float sizeInM);

private:
    QString m_program;
};
