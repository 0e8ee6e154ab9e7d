#include "tests/desktop/played_pane.h"

#include "desktop/pane/part_browser_factory.h"
#include "tests/desktop/played_user.h"

#include <QFrame>
#include <QLabel>

namespace partkeep {

namespace {

std::string Joined(const QStringList& names)
{
    return names.join(u' ').toStdString();
}

} // namespace

CPlayedPane::CPlayedPane(const CTestLibraries& libraries, const PaneStart& start)
{
    CPartBrowserFactory factory(
        CLibraryFolder(libraries.Folder()), [&start] { return start.language; },
        libraries.Folder() + QStringLiteral("/places/browser.json"));
    QWidget* widget = nullptr;
    browser.Attach(factory.Create(part_browser_class_id, &window, widget));
    pane = static_cast<CBrowserPane*>(widget);
    pane->setGeometry(0, 0, 802, 330);
    browser.SetEventSink([this](std::int32_t event) { clicks_ += event == static_cast<int>(BrowserEvent::Click); });
    browser.SetPartFilter(start.filter);
    browser.SetServerList({});
    window.resize(802, 400);
    window.show();
    browser.MoveFocus(focus_at_start);
    pane->setFocus();
    browser.ConnectServer(start.server);
    browser.SetCurrentServer(start.server);
    browser.SetCurrentFolder(start.folder);
    Settle();
}

std::string CPlayedPane::Selected()
{
    QStringList names;
    const std::int32_t count = browser.GetSelectedPartCount();
    for (std::int16_t i = 0; i < count; ++i) {
        char server[short_text_bytes];
        char folder[short_text_bytes];
        char name[short_text_bytes] = "?";
        browser.GetSelectedPart(i, server, folder, name);
        names += QString::fromUtf8(name);
    }
    return Joined(names);
}

std::string CPlayedPane::Shown()
{
    QStringList names;
    for (int row = 0; row < pane->Model().rowCount(); ++row) {
        names += pane->Model().index(row, 0).data().toString();
    }
    return Joined(names);
}

std::string CPlayedPane::Cell(int row, PartColumn column)
{
    return pane->Model().index(row, static_cast<int>(column)).data().toString().toStdString();
}

std::string CPlayedPane::ProblemLine()
{
    const QWidget* line = Button(QStringLiteral("Try again"))->parentWidget();
    return line->isVisible() ? line->accessibleName().toStdString() : std::string();
}

QToolButton* CPlayedPane::Button(const QString& text)
{
    for (QToolButton* button : pane->findChildren<QToolButton*>()) {
        if (button->accessibleName() == text) {
            return button;
        }
    }
    return nullptr;
}

void CPlayedPane::ClickRow(int row, Qt::KeyboardModifiers modifiers)
{
    const QRect place = List().visualRect(pane->Model().index(row, 0));
    QTest::mouseClick(List().viewport(), Qt::LeftButton, modifiers, place.center());
    Settle();
}

void CPlayedPane::ClickBeside()
{
    QTest::mouseClick(List().viewport(), Qt::LeftButton, Qt::NoModifier,
                      List().viewport()->rect().bottomLeft() + QPoint(9, -9));
    Settle();
}

void CPlayedPane::ClickFolder(const QString& server, const QString& name)
{
    const QAbstractItemModel& model = *Tree().model();
    const QModelIndexList found =
        model.match(model.index(0, 0), Qt::DisplayRole, name, -1, Qt::MatchExactly | Qt::MatchRecursive);
    for (const QModelIndex& index : found) {
        QModelIndex top = index;
        while (top.parent().isValid()) {
            top = top.parent();
        }
        if (top.data().toString() == server) {
            Tree().scrollTo(index);
            QTest::mouseClick(Tree().viewport(), Qt::LeftButton, Qt::NoModifier, Tree().visualRect(index).center());
        }
    }
    Settle();
}

void CPlayedPane::Key(Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    QTest::keyClick(window.focusWidget(), key, modifiers);
    Settle();
}

void CPlayedPane::Type(const QString& text)
{
    for (const QChar letter : text) {
        QTest::keyClicks(window.focusWidget(), letter);
    }
    Settle();
}

void CPlayedPane::Settle()
{
    do {
        partkeep::Settle();
    } while (pane->HasWork());
}

int CPlayedPane::TakeClicks()
{
    return std::exchange(clicks_, 0);
}

} // namespace partkeep
