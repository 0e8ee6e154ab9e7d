#include "desktop/pane/search_line.h"

#include "desktop/finger.h"
#include "desktop/pane/busy_pointer.h"
#include "desktop/pane/column_menu.h"
#include "desktop/pane/pane_icons.h"
#include "desktop/pane/part_list_model.h"

#include <QActionGroup>
#include <QHBoxLayout>
#include <QMenu>
#include <QToolButton>

namespace partkeep {

namespace {

constexpr int line_gap = 4;
constexpr std::size_t most_values = 200; // more cannot be chosen from; who looks for one of them searches
constexpr PartColumn narrow_columns[] = {PartColumn::Material, PartColumn::Machine, PartColumn::Thickness};

} // namespace

CSearchLine::CSearchLine(CBrowserSession& session, PaneLanguage language, std::function<void(SearchScope)> scope_chosen)
    : session_(session), language_(language), scope_chosen_(std::move(scope_chosen)), box_(new CSearchBox(this)),
      scope_(MakeButton(PaneText::ScopeFolder)), narrow_(MakeButton(PaneText::Narrow)), narrow_menu_(new QMenu(this)),
      line_(new QHBoxLayout(this))
{
    box_->setAccessibleName(Text(PaneText::Search));
    box_->setMinimumHeight(FingerSide(button_side));
    box_->ClearButton().setAccessibleName(Text(PaneText::ClearSearch));
    box_->ClearButton().setToolTip(Text(PaneText::ClearSearch));
    scope_->setCheckable(true);
    scope_->setAccessibleName(Text(PaneText::ScopeServer)); // checked or not
    scope_->setToolTip(Text(PaneText::ScopeTip));
    narrow_->setMenu(narrow_menu_);
    narrow_->setPopupMode(QToolButton::InstantPopup);
    line_->setContentsMargins(0, 0, 0, 0);
    line_->setSpacing(line_gap);
    line_->addWidget(box_, 1);
    line_->addWidget(scope_);
    line_->addWidget(narrow_);
    connect(scope_, &QToolButton::toggled, this, [this](bool whole) { // an assistive tool toggles without a click
        if (whole != SearchesServer()) {
            Switch();
        }
    });
    connect(narrow_menu_, &QMenu::aboutToShow, this, [this] { FillNarrowMenu(); });
    ShowState();
}

QToolButton* CSearchLine::MakeButton(PaneText text)
{
    return MakePaneButton(Text(text), this);
}

void CSearchLine::AddButton(QWidget* button)
{
    line_->addWidget(button);
}

QList<QWidget*> CSearchLine::FocusStops() const
{
    return {box_, &box_->ClearButton(), scope_, narrow_};
}

void CSearchLine::Switch()
{
    if (!session_.SearchesServers()) {
        ShowState();
        return;
    }
    scope_chosen_(SearchesServer() ? SearchScope::Folder : SearchScope::Server);
}

bool CSearchLine::SearchesServer() const
{
    return session_.Scope() == SearchScope::Server && session_.SearchesServers();
}

// A library that cannot list all its folders leaves no choice.
void CSearchLine::ShowState()
{
    const bool whole = SearchesServer();
    box_->setPlaceholderText(Text(whole ? PaneText::SearchServerHint : PaneText::SearchHint));
    scope_->setChecked(whole);
    scope_->setText(Text(whole ? PaneText::ScopeServer : PaneText::ScopeFolder));
    scope_->setEnabled(session_.SearchesServers());
    QStringList narrowed;
    const PartListView view = session_.ListView();
    for (const auto& [column, value] : view.only) {
        narrowed += ValueText(column, value);
    }
    narrow_->setText(narrowed.isEmpty() ? Text(PaneText::Narrow) : narrowed.join(QStringLiteral(", ")));
    narrow_->setDown(!narrowed.isEmpty());
    narrow_->setAccessibleDescription(narrowed.join(QStringLiteral(", ")));
    narrow_->setEnabled(session_.SearchesServers() && session_.CurrentFolder().id != 0);
}

void CSearchLine::DrawIcons()
{
    box_->ClearButton().setIcon(DrawPaneIcon(PaneIcon::Clear, palette()));
    scope_->setIcon(DrawPaneIcon(PaneIcon::Search, palette()));
    narrow_->setIcon(DrawPaneIcon(PaneIcon::Narrow, palette()));
    StyleMenu(*narrow_menu_, Text(PaneText::Narrow));
}

QString CSearchLine::ValueText(PartColumn column, const ColumnValue& value) const
{
    return column == PartColumn::Thickness ? ThicknessText(value.text.toInt(), session_.ShownUnit()) : value.text;
}

void CSearchLine::FillNarrowMenu()
{
    for (QMenu* old : narrow_menu_->findChildren<QMenu*>(Qt::FindDirectChildrenOnly)) {
        old->deleteLater(); // clearing leaves it
    }
    narrow_menu_->clear();
    constexpr PaneText names[] = {PaneText::Material, PaneText::Machine, PaneText::ThicknessMetric};
    for (std::size_t i = 0; i < std::size(narrow_columns); ++i) {
        const PartColumn column = narrow_columns[i];
        const bool inch = names[i] == PaneText::ThicknessMetric && session_.ShownUnit() == DisplayUnit::Inch;
        QMenu* values = narrow_menu_->addMenu(Text(inch ? PaneText::ThicknessInch : names[i]));
        StyleMenu(*values, values->title());
        connect(values, &QMenu::aboutToShow, this, [this, values, column] { FillValues(*values, column); });
    }
}

// What the list would hold without this choice, so that another value can be chosen in its place.
void CSearchLine::FillValues(QMenu& menu, PartColumn column)
{
    const CBusyPointer busy;
    menu.clear();
    PartListView view = session_.ListView();
    const auto chosen = view.only.find(column);
    const auto known = chosen != view.only.end() ? std::optional(chosen->second) : std::nullopt;
    view.only.erase(column);
    if (SearchesServer()) {
        view.folder = all_folders;
    }
    auto* group = new QActionGroup(&menu);
    const auto add = [&](const QString& text, const std::optional<ColumnValue>& value) {
        QString shown = text;
        QAction* action = menu.addAction(shown.replace(u'&', QStringLiteral("&&")), this,
                                         [this, column, value] { session_.NarrowTo(column, value); });
        action->setCheckable(true);
        action->setChecked(value == known);
        group->addAction(action);
    };
    add(Text(PaneText::NarrowAll), std::nullopt);
    const auto values =
        session_.Library() != nullptr ? session_.Library()->Values(view, column, most_values) : std::nullopt;
    for (const ColumnValue& value : values.value_or(std::vector<ColumnValue>{})) {
        if (!value.text.isEmpty()) {
            add(ValueText(column, value), value);
        }
    }
    if (values && values->size() >= most_values) {
        menu.addAction(Text(PaneText::NarrowMore))->setEnabled(false);
    }
    if (menu.actions().size() == 1) {
        menu.addAction(Text(PaneText::NarrowNothing))->setEnabled(false);
    }
}

} // namespace partkeep
