#pragma once

#include "model/KVAppError.h"

#include <QPointer>
#include <QString>

class QLabel;

// The last step of the create-image and encrypt-disk wizards: a picture, a
// heading, a subheading and a description, showing either the success that
// the wizard prepares on every reset or a failure.
class KVFinishScreen
{
public:
    static inline const QString SuccessImageName = QStringLiteral("FinishedSuccessful");
    static inline const QString FailureImageName = QStringLiteral("FinishedFailure");

    struct Texts
    {
        QString heading;
        QString subheading;
        QString description;
    };

    KVFinishScreen(QLabel *heading, QLabel *subheading, QLabel *description, QLabel *image);

    void showSuccess(const Texts &texts);
    // The error's description as heading and again as subheading, its
    // failure reason as description.
    void showFailure(const KVAppError &error);

    // The name of the picture shown now.
    QString imageName() const;

private:
    void show(const QString &imageName, const Texts &texts);

    QPointer<QLabel> m_heading;
    QPointer<QLabel> m_subheading;
    QPointer<QLabel> m_description;
    QPointer<QLabel> m_image;
};
