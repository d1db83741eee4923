#include "wizards/KVChangePasswordController.h"

#include "app/KVSheetReturnCode.h"
#include "controls/KVPasswordFieldView.h"
#include "disk/KVDisk.h"
#include "wizards/KVNewPasswordForm.h"
#include "wizards/KVPasswordStrengthMeterView.h"

#include "../app/KVMountFixture.h"
#include "KVScreenshot.h"

#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>

using namespace KVMountFixture;

namespace {

template<typename T>
T *part(QWidget *dialog, const char *name)
{
    auto *found = dialog->findChild<T *>(QString::fromLatin1(name));
    if (!found)
        qFatal("no %s", name);
    return found;
}

int openAlerts()
{
    int count = 0;
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (auto *box = qobject_cast<QMessageBox *>(widget); box && box->isVisible())
            ++count;
    }
    return count;
}

// Types into a field as a person would, so that the field reports the edit.
void type(QWidget *dialog, const char *field, const QString &text)
{
    auto *edit = part<KVPasswordFieldView>(dialog, field);
    edit->setFocus();
    edit->selectAll();
    edit->del();
    edit->insert(text); // an edit, as typing is: the field reports it
}

KVVolumeItemPtr noneVolume()
{
    return KVVolumeItem::create({{QStringLiteral("unknown"), QVariantMap{}}}, nullptr);
}

// The dialog on doubles of both tools, shown as a sheet of a window.
struct Sheet
{
    Sheet()
        : hdiutil(QStringLiteral("hdiutil"))
        , diskutil(QStringLiteral("diskutil"))
        , di(KVToolPaths{hdiutil.path(), diskutil.path(), QString()}, &workspace)
        , disks(KVToolPaths{hdiutil.path(), diskutil.path(), QString()}, &workspace)
        , dialog(new KVChangePasswordController(&window))
        , finished(dialog, &QDialog::finished)
    {
        dialog->setDi(&di);
        dialog->setDisks(&disks);
        window.show();
    }

    void open(const KVVolumeItemPtr &item)
    {
        dialog->setCurrentSelection(item);
        dialog->open();
    }

    void fill(const QString &oldPassword, const QString &newPassword, const QString &confirmation)
    {
        type(dialog, "oldPasswordField", oldPassword);
        type(dialog, "passwordField", newPassword);
        type(dialog, "confirmPasswordField", confirmation);
    }

    QPushButton *button(const char *name) const { return part<QPushButton>(dialog, name); }

    KVToolDouble hdiutil;
    KVToolDouble diskutil;
    KVWorkspaceNotifications workspace;
    KVDiskImage di;
    KVDisk disks;
    QWidget window;
    KVChangePasswordController *dialog;
    QSignalSpy finished;
};

} // namespace

class TestKVChangePasswordController : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { closeAlerts(); }

    void outletsAndIdentifiers();
    void changeNeedsMatchingNewPassword_data();
    void changeNeedsMatchingNewPassword();
    void meterFollowsOnlyTheNewPassword();
    void pictureByVolumeKind_data();
    void pictureByVolumeKind();
    void imagePasswordGoesToHdiutil_data();
    void imagePasswordGoesToHdiutil();
    void diskPassphraseGoesToDiskutil();
    void wrongOldPasswordStaysInTheSheet();
    void otherFailureIsAnAlert();
    void unknownVolumeKindCallsNoEngine();
    void cancelForgetsEverything();
};

void TestKVChangePasswordController::outletsAndIdentifiers()
{
    KVChangePasswordController dialog;
    for (const char *name : {"oldPasswordField", "passwordField", "confirmPasswordField", "passwordStrengthMeter",
                             "changeButton", "cancelButton", "errorNotification", "thumbImg"})
        QVERIFY2(dialog.findChild<QWidget *>(QString::fromLatin1(name)), name);
    QCOMPARE(part<QPushButton>(&dialog, "changeButton")->property("identifier").toString(), u"change"_qs);
    QCOMPARE(part<QPushButton>(&dialog, "cancelButton")->property("identifier").toString(), u"cancel"_qs);
    QVERIFY(!part<QPushButton>(&dialog, "changeButton")->isEnabled());
    QVERIFY(part<QPushButton>(&dialog, "cancelButton")->isEnabled());
    QVERIFY(part<QLabel>(&dialog, "errorNotification")->isHidden());
}

void TestKVChangePasswordController::changeNeedsMatchingNewPassword_data()
{
    QTest::addColumn<QString>("oldPassword");
    QTest::addColumn<QString>("newPassword");
    QTest::addColumn<QString>("confirmation");
    QTest::addColumn<bool>("enabled");
    QTest::newRow("both new fields empty") << u"old"_qs << QString() << QString() << false;
    QTest::newRow("confirmation differs") << u"old"_qs << u"new"_qs << u"nex"_qs << false;
    QTest::newRow("confirmation missing") << u"old"_qs << u"new"_qs << QString() << false;
    QTest::newRow("equal") << u"old"_qs << u"new"_qs << u"new"_qs << true;
    QTest::newRow("old password is not examined") << QString() << u"new"_qs << u"new"_qs << true;
    QTest::newRow("one character") << u"old"_qs << u"x"_qs << u"x"_qs << true;
}

void TestKVChangePasswordController::changeNeedsMatchingNewPassword()
{
    QFETCH(QString, oldPassword);
    QFETCH(QString, newPassword);
    QFETCH(QString, confirmation);
    QFETCH(bool, enabled);
    Sheet sheet;
    sheet.open(imageVolume(3, u"/media/someone/Volume3"_qs));
    sheet.fill(oldPassword, newPassword, confirmation);
    QCOMPARE(sheet.button("changeButton")->isEnabled(), enabled);
}

void TestKVChangePasswordController::meterFollowsOnlyTheNewPassword()
{
    Sheet sheet;
    sheet.open(imageVolume(3, u"/media/someone/Volume3"_qs));
    auto *meter = part<KVPasswordStrengthMeterView>(sheet.dialog, "passwordStrengthMeter");
    type(sheet.dialog, "confirmPasswordField", u"correct horse battery staple"_qs);
    QTest::qWait(100);
    QCOMPARE(meter->litSegments(), 0);
    type(sheet.dialog, "passwordField", u"correct horse battery staple"_qs);
    QTRY_COMPARE(meter->litSegments(), 4);
    sheet.dialog->reset();
    QCOMPARE(meter->litSegments(), 0);
    QVERIFY(sheet.dialog->newPasswordForm()->hasEstimator());
    sheet.dialog->newPasswordForm()->cleanPasswords();
    QVERIFY(!sheet.dialog->newPasswordForm()->hasEstimator());
}

void TestKVChangePasswordController::pictureByVolumeKind_data()
{
    QTest::addColumn<KVVolumeItemPtr>("item");
    QTest::addColumn<QString>("picture");
    QTest::newRow("disk") << diskVolume(u"Data"_qs, u"/Volumes/Data"_qs, 1000, 500)
                          << KVChangePasswordController::DiskIconName;
    QTest::newRow("disk image") << imageVolume(3, u"/media/someone/Volume3"_qs)
                                << KVChangePasswordController::DiskImageIconName;
    QTest::newRow("none") << noneVolume() << KVChangePasswordController::DiskImageIconName;
    QTest::newRow("no volume") << KVVolumeItemPtr() << KVChangePasswordController::DiskImageIconName;
}

void TestKVChangePasswordController::pictureByVolumeKind()
{
    QFETCH(KVVolumeItemPtr, item);
    QFETCH(QString, picture);
    KVChangePasswordController dialog;
    dialog.setCurrentSelection(diskVolume(u"Data"_qs, u"/Volumes/Data"_qs, 1000, 500));
    dialog.setCurrentSelection(item);
    QCOMPARE(dialog.thumbImageName(), picture);
    QVERIFY(!part<QLabel>(&dialog, "thumbImg")->pixmap().isNull());
}

void TestKVChangePasswordController::imagePasswordGoesToHdiutil_data()
{
    QTest::addColumn<QString>("oldPassword");
    QTest::addColumn<QString>("newPassword");
    QTest::newRow("plain") << u"old secret"_qs << u"new secret"_qs;
    QTest::newRow("one character") << u"o"_qs << u"n"_qs;
    QTest::newRow("4096 characters") << u"old"_qs << QString(4096, u'ä');
    QTest::newRow("outside the basic plane") << u"old"_qs << u"pass \U0001F511 word \U00020000"_qs;
}

void TestKVChangePasswordController::imagePasswordGoesToHdiutil()
{
    QFETCH(QString, oldPassword);
    QFETCH(QString, newPassword);
    Sheet sheet;
    sheet.open(imageVolume(3, u"/media/someone/Volume3"_qs));
    sheet.fill(oldPassword, newPassword, newPassword);
    sheet.button("changeButton")->click();
    QVERIFY(!sheet.button("changeButton")->isEnabled());
    QVERIFY(!sheet.button("cancelButton")->isEnabled());
    QTRY_COMPARE(sheet.finished.size(), 1);
    QCOMPARE(sheet.finished.at(0).at(0).toInt(), int(KVSheetReturnCode::Succeeded));
    QCOMPARE(openAlerts(), 0);
    QCOMPARE(sheet.hdiutil.runCount(), 1);
    QCOMPARE(sheet.hdiutil.arguments(1), (QStringList{u"chpass"_qs, u"-oldstdinpass"_qs, u"-newstdinpass"_qs,
                                                      u"-verbose"_qs, u"/home/someone/3.sparseimage"_qs}));
    QCOMPARE(sheet.hdiutil.standardInput(1), oldPassword.toUtf8() + '\0' + newPassword.toUtf8());
    // Every end forgets the volume and the typed text.
    QVERIFY(!sheet.dialog->currentSelection());
    for (const char *field : {"oldPasswordField", "passwordField", "confirmPasswordField"})
        QVERIFY2(part<KVPasswordFieldView>(sheet.dialog, field)->text().isEmpty(), field);
}

void TestKVChangePasswordController::diskPassphraseGoesToDiskutil()
{
    Sheet sheet;
    sheet.diskutil.setResponse("Started CoreStorage operation\nFinished CoreStorage operation\n");
    sheet.open(diskVolume(u"Data"_qs, u"/Volumes/Data"_qs, 1000, 500));
    sheet.fill(u"old"_qs, u"new"_qs, u"new"_qs);
    sheet.button("changeButton")->click();
    QTRY_COMPARE(sheet.finished.size(), 1);
    QCOMPARE(sheet.finished.at(0).at(0).toInt(), int(KVSheetReturnCode::Succeeded));
    QCOMPARE(sheet.hdiutil.runCount(), 0);
    QCOMPARE(sheet.diskutil.runCount(), 1);
    QCOMPARE(sheet.diskutil.arguments(1).mid(0, 2), (QStringList{u"cs"_qs, u"changeVolumePassphrase"_qs}));
    QVERIFY(sheet.diskutil.arguments(1).contains(u"-stdinpassphrase"_qs));
    QCOMPARE(sheet.diskutil.standardInput(1), QByteArray("old\nnew"));
}

void TestKVChangePasswordController::wrongOldPasswordStaysInTheSheet()
{
    Sheet sheet;
    sheet.hdiutil.setResponseFromFile(u"hdiutil/chpass-wrong-password.txt"_qs, 1);
    sheet.open(imageVolume(3, u"/media/someone/Volume3"_qs));
    sheet.fill(u"wrong"_qs, u"new one"_qs, u"new one"_qs);
    sheet.button("changeButton")->click();
    auto *line = part<QLabel>(sheet.dialog, "errorNotification");
    QTRY_VERIFY(line->isVisible());
    QCOMPARE(line->text(), u"Wrong Password"_qs);
    QCOMPARE(sheet.finished.size(), 0);
    QCOMPARE(openAlerts(), 0);
    QVERIFY(sheet.button("changeButton")->isEnabled());
    QVERIFY(sheet.button("cancelButton")->isEnabled());
    QCOMPARE(QApplication::focusWidget(), part<QWidget>(sheet.dialog, "oldPasswordField"));
    QCOMPARE(part<KVPasswordFieldView>(sheet.dialog, "oldPasswordField")->text(), u"wrong"_qs);
    QCOMPARE(part<KVPasswordFieldView>(sheet.dialog, "passwordField")->text(), u"new one"_qs);
    kvSaveScreenshot(sheet.dialog, u"change-password-wrong-old-password"_qs);

    // Editing re-evaluates the button only; the line stays until the sheet ends.
    type(sheet.dialog, "confirmPasswordField", u"new on"_qs);
    QVERIFY(!sheet.button("changeButton")->isEnabled());
    QVERIFY(line->isVisible());
    type(sheet.dialog, "confirmPasswordField", u"new one"_qs);
    QVERIFY(sheet.button("changeButton")->isEnabled());
    sheet.button("cancelButton")->click();
    QCOMPARE(sheet.finished.size(), 1);
    QCOMPARE(sheet.finished.at(0).at(0).toInt(), int(KVSheetReturnCode::Cancelled));
    QVERIFY(line->isHidden());
}

void TestKVChangePasswordController::otherFailureIsAnAlert()
{
    Sheet sheet;
    sheet.hdiutil.setResponseFromFile(u"hdiutil/chpass-no-such-file.txt"_qs, 1);
    sheet.open(imageVolume(3, u"/media/someone/Volume3"_qs));
    sheet.fill(u"old"_qs, u"new"_qs, u"new"_qs);
    sheet.button("changeButton")->click();
    QTRY_COMPARE(sheet.finished.size(), 1);
    QCOMPARE(sheet.finished.at(0).at(0).toInt(), int(KVSheetReturnCode::Cancelled));
    QTRY_COMPARE(openAlerts(), 1);
    QVERIFY(part<QLabel>(sheet.dialog, "errorNotification")->isHidden());
}

void TestKVChangePasswordController::unknownVolumeKindCallsNoEngine()
{
    Sheet sheet;
    sheet.open(noneVolume());
    sheet.fill(u"old"_qs, u"new"_qs, u"new"_qs);
    sheet.button("changeButton")->click();
    QCOMPARE(sheet.finished.size(), 1);
    QCOMPARE(sheet.finished.at(0).at(0).toInt(), int(KVSheetReturnCode::Cancelled));
    QMessageBox *alert = openAlert();
    QVERIFY(alert);
    QCOMPARE(alert->text(), u"Changing password failed"_qs);
    QCOMPARE(alert->informativeText(), u"Not a valid volume"_qs);
    QTest::qWait(100);
    QCOMPARE(sheet.hdiutil.runCount(), 0);
    QCOMPARE(sheet.diskutil.runCount(), 0);
    QVERIFY(!sheet.dialog->currentSelection());
}

void TestKVChangePasswordController::cancelForgetsEverything()
{
    Sheet sheet;
    sheet.open(imageVolume(3, u"/media/someone/Volume3"_qs));
    sheet.fill(u"old"_qs, u"new"_qs, u"new"_qs);
    QTest::keyClick(sheet.dialog, Qt::Key_Escape);
    QCOMPARE(sheet.finished.size(), 1);
    QCOMPARE(sheet.finished.at(0).at(0).toInt(), int(KVSheetReturnCode::Cancelled));
    QVERIFY(!sheet.dialog->currentSelection());
    QVERIFY(!sheet.button("changeButton")->isEnabled());
    for (const char *field : {"oldPasswordField", "passwordField", "confirmPasswordField"})
        QVERIFY2(part<KVPasswordFieldView>(sheet.dialog, field)->text().isEmpty(), field);
}

QTEST_MAIN(TestKVChangePasswordController)
#include "tst_kvchangepasswordcontroller.moc"
