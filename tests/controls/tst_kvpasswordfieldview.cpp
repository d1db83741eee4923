#include "controls/KVPasswordFieldShowTextButton.h"
#include "controls/KVPasswordFieldView.h"

#include <QFile>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

// A window with the password field and another line edit to take the focus.
class FieldWindow : public QWidget
{
public:
    FieldWindow()
    {
        auto *layout = new QVBoxLayout(this);
        layout->addWidget(other);
        layout->addWidget(field);
        resize(240, 80);
    }

    QLineEdit *other = new QLineEdit;
    KVPasswordFieldView *field = new KVPasswordFieldView;
};

class TestKVPasswordFieldView : public QObject
{
    Q_OBJECT

private:
    static bool showAndActivate(QWidget &window)
    {
        window.show();
        window.activateWindow();
        return QTest::qWaitForWindowActive(&window);
    }

    static void clickEye(KVPasswordFieldView *field)
    {
        QTest::mouseClick(field->showTextButton(), Qt::LeftButton);
    }

private Q_SLOTS:
    void startsHidden()
    {
        KVPasswordFieldView field;
        QVERIFY(!field.showsText());
        QCOMPARE(field.echoMode(), QLineEdit::Password);
        QVERIFY(field.becomesFirstResponderWhenToggled());
        QCOMPARE(field.showTextButton()->focusPolicy(), Qt::NoFocus);
        QVERIFY(QFile::exists(QStringLiteral(":/icons/RevealPassword.svg")));
    }

    void togglingTwiceKeepsTextAndCaret()
    {
        FieldWindow window;
        QVERIFY(showAndActivate(window));
        KVPasswordFieldView *field = window.field;
        field->setFocus();
        QTRY_VERIFY(field->hasFocus());
        // Qt Test types ASCII only; the rest is inserted as an input method would.
        QTest::keyClicks(field, QStringLiteral("s3cret "));
        field->insert(QStringLiteral("\u00e9 \U0001F511 e\u0301"));
        const QString password = QStringLiteral("s3cret \u00e9 \U0001F511 e\u0301");
        QCOMPARE(field->text(), password);
        field->setCursorPosition(4);

        clickEye(field);
        QVERIFY(field->showsText());
        QCOMPARE(field->echoMode(), QLineEdit::Normal);
        QCOMPARE(field->text(), password);
        QCOMPARE(field->cursorPosition(), 4);
        QVERIFY(field->hasFocus());

        clickEye(field);
        QVERIFY(!field->showsText());
        QCOMPARE(field->echoMode(), QLineEdit::Password);
        QCOMPARE(field->text(), password);
        QCOMPARE(field->cursorPosition(), 4);
        QVERIFY(field->hasFocus());
    }

    void togglingKeepsTheSelectionAndItsDirection()
    {
        FieldWindow window;
        QVERIFY(showAndActivate(window));
        KVPasswordFieldView *field = window.field;
        field->setFocus();
        QTRY_VERIFY(field->hasFocus());
        field->setText(QStringLiteral("correct horse"));

        field->setSelection(10, -7); // caret at 3, selection 3..10
        field->toggleTextShown();
        QCOMPARE(field->selectionStart(), 3);
        QCOMPARE(field->selectionLength(), 7);
        QCOMPARE(field->cursorPosition(), 3);

        field->setSelection(3, 7); // caret at 10
        field->toggleTextShown();
        QCOMPARE(field->selectionStart(), 3);
        QCOMPARE(field->selectionLength(), 7);
        QCOMPARE(field->cursorPosition(), 10);
    }

    void clickingTheEyeFromAnotherFieldTakesTheFocus()
    {
        FieldWindow window;
        QVERIFY(showAndActivate(window));
        window.other->setFocus();
        QTRY_VERIFY(window.other->hasFocus());

        clickEye(window.field);
        QVERIFY(window.field->showsText());
        QTRY_VERIFY(window.field->hasFocus());
    }

    void aToggleCanLeaveTheFocusAlone()
    {
        FieldWindow window;
        QVERIFY(showAndActivate(window));
        window.field->setBecomesFirstResponderWhenToggled(false);
        window.other->setFocus();
        QTRY_VERIFY(window.other->hasFocus());

        window.field->toggleTextShown();
        QVERIFY(window.field->showsText());
        QVERIFY(window.other->hasFocus());
    }

    void reportsEveryKeystrokeWithTheField()
    {
        FieldWindow window;
        QVERIFY(showAndActivate(window));
        KVPasswordFieldView *field = window.field;
        field->setFocus();
        QTRY_VERIFY(field->hasFocus());

        QStringList liveTexts;
        connect(field, &KVPasswordFieldView::textDidChange, this,
                [&liveTexts, field](KVPasswordFieldView *sender) {
                    QCOMPARE(sender, field);
                    liveTexts << sender->text();
                });
        QTest::keyClicks(field, QStringLiteral("ab"));
        field->toggleTextShown();
        QTest::keyClicks(field, QStringLiteral("c"));
        QTest::keyClick(field, Qt::Key_Backspace);
        QCOMPARE(liveTexts, (QStringList{QStringLiteral("a"), QStringLiteral("ab"), QStringLiteral("abc"),
                                         QStringLiteral("ab")}));

        // Programmatic changes (a reset) are not keystrokes.
        field->clear();
        QCOMPARE(liveTexts.size(), 4);
    }

    void textNeverRunsUnderTheEye_data()
    {
        QTest::addColumn<bool>("showsText");
        QTest::newRow("hidden") << false;
        QTest::newRow("shown") << true;
    }

    void textNeverRunsUnderTheEye()
    {
        QFETCH(bool, showsText);
        FieldWindow window;
        QVERIFY(showAndActivate(window));
        KVPasswordFieldView *field = window.field;
        field->setShowsText(showsText);
        field->setText(QString(200, QLatin1Char('W')));
        field->end(false);
        field->repaint(); // a line edit scrolls to its caret when it paints
        // The caret's rectangle is padded on both sides for repainting; the
        // caret itself is its middle.
        const int caret = field->inputMethodQuery(Qt::ImCursorRectangle).toRect().center().x();
        const QRect eye = field->showTextButton()->geometry();
        QVERIFY2(caret < eye.left(),
                 qPrintable(QStringLiteral("caret at %1, eye starts at %2").arg(caret).arg(eye.left())));
        QCOMPARE(eye.size(), QSize(16, 10));
        QCOMPARE(eye.right(), field->width() - 5);
        QCOMPARE(eye.center().y(), field->rect().center().y());
    }

    void theEyeSaysWhatItWillDo()
    {
        KVPasswordFieldView field;
        KVPasswordFieldShowTextButton *eye = field.showTextButton();
        QCOMPARE(eye->accessibleName(), QStringLiteral("Show password"));
        field.setShowsText(true);
        QCOMPARE(eye->accessibleName(), QStringLiteral("Hide password"));
    }
};

QTEST_MAIN(TestKVPasswordFieldView)
#include "tst_kvpasswordfieldview.moc"
