#include "desktop/qt_messages.h"

#include "desktop/qt_input.h"
#include "desktop/screen_watch.h"
#include "host/windows_part.h"
#include "partlibrary/library/library_text.h"
#include "platform/posix/stderr_messages.h"
#include "settings/local_strings.h"

#include <QApplication>
#include <QEventLoop>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QThread>

namespace partkeep {

namespace {

// By a loop of its own: the box's would be left pointed at where an exception leaves it.
void WaitForEnd(const QMessageBox& box)
{
    QEventLoop loop;
    QObject::connect(&box, &QDialog::finished, &loop, &QEventLoop::quit);
    QObject::connect(&box, &QObject::destroyed, &loop, &QEventLoop::quit);
    loop.exec();
}

} // namespace

void CQtMessages::Show(const Message& message)
{
    if (!HasScreen()) {
        CStderrMessages().Show(message);
        return;
    }
    const CArrowPointer arrow;
    const QPointer<QWidget> active = QApplication::activeWindow();
    // By pointer: an owner that goes while the box is open takes the box with it.
    const QPointer<QMessageBox> box = new QMessageBox(owner_ ? owner_.data() : active.data());
    box->setWindowModality(Qt::ApplicationModal); // all windows of the system wait for the answer
    box->setWindowTitle(FromWide(message.title));
    box->setTextFormat(Qt::PlainText); // names of parts may look like markup
    box->setText(FromWide(message.text));
    box->setIcon(message.kind == MessageKind::Exclamation ? QMessageBox::Warning : QMessageBox::NoIcon);
    box->addButton(FromWide(LoadLocalString(LocalString::Ok)), QMessageBox::AcceptRole);
    box->show();
    try {
        WaitForEnd(*box);
        DropWaitingInput();
    } catch (const CScreenLost&) {
        CStderrMessages().Show(message);
    }
    delete box;
    if (active) {
        active->activateWindow();
    }
}

bool HasScreen()
{
    const auto* application = qobject_cast<QApplication*>(QCoreApplication::instance());
    return application != nullptr && application->thread() == QThread::currentThread() &&
           QGuiApplication::primaryScreen() != nullptr && !application->property(screen_lost_property).toBool();
}

CArrowPointer::CArrowPointer() : replaced_(QGuiApplication::overrideCursor() != nullptr)
{
    if (replaced_) {
        QGuiApplication::setOverrideCursor(Qt::ArrowCursor);
    }
}

CArrowPointer::~CArrowPointer()
{
    if (replaced_) {
        QGuiApplication::restoreOverrideCursor();
    }
}

} // namespace partkeep
