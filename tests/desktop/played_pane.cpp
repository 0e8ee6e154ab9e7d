#include "tests/desktop/played_pane.h"

#include "desktop/pane/part_browser_factory.h"

namespace partkeep {

void Settle(CBrowserPane& pane)
{
    do {
        Settle();
    } while (pane.HasWork());
}

std::string NamesUnder(const QAbstractItemModel& model, const QModelIndex& item)
{
    QStringList names;
    for (int row = 0; row < model.rowCount(item); ++row) {
        names += model.index(row, 0, item).data().toString();
    }
    return names.join(u' ').toStdString();
}

void ClickRow(CBrowserPane& pane, int row, Qt::KeyboardModifiers modifiers)
{
    Settle(pane);
    ClickAt(*pane.List().viewport(), PlaceOfRow(pane, row), modifiers);
    Settle(pane);
}

void ClickInTree(CBrowserPane& pane, const QString& server, const QString& name)
{
    auto& tree = OwnChild<CServerTree>(pane);
    const QAbstractItemModel& model = *tree.model();
    for (const QModelIndex& index :
         model.match(model.index(0, 0), Qt::DisplayRole, name, -1, Qt::MatchExactly | Qt::MatchRecursive)) {
        QModelIndex top = index;
        while (top.parent().isValid()) {
            top = top.parent();
        }
        if (top.data().toString() == server) {
            tree.scrollTo(index);
            ClickAt(*tree.viewport(), tree.visualRect(index).center());
        }
    }
    Settle(pane);
}

QToolButton* ButtonIn(CBrowserPane& pane, const QString& text)
{
    const auto buttons = pane.findChildren<QToolButton*>();
    const auto found = std::find_if(buttons.begin(), buttons.end(),
                                    [&](const QToolButton* button) { return button->accessibleName() == text; });
    return found != buttons.end() ? *found : nullptr;
}

QPoint PlaceOfRow(CBrowserPane& pane, int row)
{
    return pane.List().visualRect(pane.Model().index(row, 0)).center();
}

QMenu& Filled(QMenu* menu)
{
    Q_EMIT menu->aboutToShow();
    return *menu;
}

CPlayedPane::CPlayedPane(const CTestLibraries& libraries, const PaneStart& start)
{
    CPartBrowserFactory factory(
        start.configured ? libraries.Places() : CLibraryFolder({}, start.services), [] { return 1; },
        libraries.Folder() + u"/places/browser.json"_s);
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
    Settle(*pane);
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
    return names.join(u' ').toStdString();
}

std::string CPlayedPane::ProblemLine()
{
    const QWidget* line = ButtonIn(*pane, u"Try again"_s)->parentWidget();
    return line->isVisible() ? line->accessibleName().toStdString() : std::string();
}

void CPlayedPane::Key(Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    QTest::keyClick(window.focusWidget(), key, modifiers);
    Settle(*pane);
}

void CPlayedPane::Type(const QString& text)
{
    for (const QChar letter : text) {
        QTest::keyClicks(window.focusWidget(), letter);
    }
    Settle(*pane);
}

} // namespace partkeep
