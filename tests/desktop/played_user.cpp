#include "tests/desktop/played_user.h"

#include <QApplication>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QThread>
#include <QTimer>
#include <QWindow>

#include <gtest/gtest.h>

#include <memory>
#include <utility>

namespace partkeep {

namespace {

constexpr int patience_ms = 5000;

class QtEnvironment : public ::testing::Environment {
public:
    void SetUp() override
    {
        if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
            qputenv("QT_QPA_PLATFORM", "offscreen");
        }
        application_ = std::make_unique<QApplication>(argument_count_, arguments_);
    }
    void TearDown() override { application_.reset(); }

private:
    int argument_count_ = 1;
    char name_[5] = "test";
    char* arguments_[2] = {name_, nullptr};
    std::unique_ptr<QApplication> application_;
};

[[maybe_unused]] const auto* environment = ::testing::AddGlobalTestEnvironment(new QtEnvironment);

struct Play {
    std::vector<UserStep> steps;
    std::size_t next = 0;
    bool over = false;
    int busy_level = -1; // loops around the step that is being played; -1: none is
};

// Sending a key handles pending events as well: the next step must wait for the step itself, but not for a loop
// that the step has begun. A window that has just opened becomes active a little later.
bool IsUserReady(const Play& play)
{
    if (QThread::currentThread()->loopLevel() <= play.busy_level) {
        return false;
    }
    const QWidget* modal = QApplication::activeModalWidget();
    const QWidget* active = QApplication::activeWindow();
    return active != nullptr && (modal == nullptr || modal == active || modal == active->parentWidget());
}

void ScheduleNext(const std::shared_ptr<Play>& play)
{
    QTimer::singleShot(0, qApp, [play] {
        if (play->over || play->next == play->steps.size()) {
            return;
        }
        if (!IsUserReady(*play)) {
            ScheduleNext(play);
            return;
        }
        const UserStep step = play->steps[play->next++];
        ScheduleNext(play); // before the step, which may not return until later ones have been played
        const int outer_level = std::exchange(play->busy_level, QThread::currentThread()->loopLevel());
        step();
        play->busy_level = outer_level;
    });
}

void CloseEverything()
{
    const QWidgetList all = QApplication::topLevelWidgets();
    for (const QPointer<QWidget>& window : QList<QPointer<QWidget>>(all.begin(), all.end())) {
        if (window) {
            window->close();
        }
    }
}

} // namespace

void PlayWhile(std::vector<UserStep> steps, const std::function<void()>& run)
{
    const auto play = std::make_shared<Play>(Play{std::move(steps)});
    ScheduleNext(play);
    QTimer patience;
    patience.setInterval(patience_ms);
    QObject::connect(&patience, &QTimer::timeout, &patience, [play] {
        ADD_FAILURE() << "still open after step " << play->next;
        CloseEverything();
    });
    patience.start();
    run();
    EXPECT_EQ(play->next, play->steps.size()) << "ended before the user was done";
    play->over = true;
}

QWidget* WindowOf(int number)
{
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window->objectName() == QString::number(number) && window->isVisible()) {
            return window;
        }
    }
    return nullptr;
}

QWidget* ControlOf(int number, int id)
{
    const QWidget* window = WindowOf(number);
    return window == nullptr ? nullptr : window->findChild<QWidget*>(QString::number(id));
}

void ClickAt(QWidget& widget, const QPoint& place, Qt::KeyboardModifiers modifiers)
{
    QTest::mouseClick(widget.window()->windowHandle(), Qt::LeftButton, modifiers, widget.mapTo(widget.window(), place));
}

UserStep Clicking(int number, int id)
{
    return [=] {
        QWidget* control = ControlOf(number, id);
        ASSERT_NE(control, nullptr) << number << "/" << id;
        ClickAt(*control, control->rect().center());
    };
}

UserStep Pressing(int number, Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    return [=] {
        QWidget* window = WindowOf(number);
        ASSERT_NE(window, nullptr) << number;
        ASSERT_TRUE(window->isActiveWindow()) << number; // waiting for it would play later steps first
        QTest::keyClick(window->windowHandle(), key, modifiers);
    };
}

UserStep Typing(int number, const QString& text)
{
    return [=] {
        for (const QChar character : text) {
            Pressing(number, static_cast<Qt::Key>(character.toUpper().unicode()))();
        }
    };
}

QString AnswerMessage()
{
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (box == nullptr) {
        ADD_FAILURE() << "no message";
        return {};
    }
    const QString text = box->text();
    ClickAt(*box->buttons().front(), box->buttons().front()->rect().center());
    return text;
}

void Settle()
{
    QTest::qWait(1);
}

} // namespace partkeep
