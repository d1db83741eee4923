#include "KVFinishScreen.h"

#include <QIcon>
#include <QLabel>

namespace {

constexpr int ImageSide = 96;

} // namespace

KVFinishScreen::KVFinishScreen(QLabel *heading, QLabel *subheading, QLabel *description, QLabel *image)
    : m_heading(heading)
    , m_subheading(subheading)
    , m_description(description)
    , m_image(image)
{
}

void KVFinishScreen::showSuccess(const Texts &texts)
{
    show(SuccessImageName, texts);
}

void KVFinishScreen::showFailure(const KVAppError &error)
{
    show(FailureImageName, {error.localizedDescription(), error.localizedDescription(), error.localizedFailureReason()});
}

QString KVFinishScreen::imageName() const
{
    return m_image ? m_image->property("imageName").toString() : QString();
}

void KVFinishScreen::show(const QString &imageName, const Texts &texts)
{
    if (m_heading)
        m_heading->setText(texts.heading);
    if (m_subheading)
        m_subheading->setText(texts.subheading);
    if (m_description)
        m_description->setText(texts.description);
    if (m_image) {
        m_image->setProperty("imageName", imageName);
        m_image->setPixmap(QIcon(QStringLiteral(":/icons/%1.svg").arg(imageName))
                               .pixmap(ImageSide, ImageSide, QIcon::Normal));
        m_image->setAccessibleName(texts.subheading);
    }
}
