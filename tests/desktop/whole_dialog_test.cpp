// Whole runs on the real windows with the real part browser, by real mouse and key events, from the host's call to
// the host's records; and what the windows look like on the way, in each language, light and dark. The scale of the
// screen comes from the environment. With PARTKEEP_PICTURES set, pictures go to that folder.

#include "desktop/pane/part_browser_factory.h"
#include "desktop/qt_dialog_windows.h"
#include "desktop/qt_messages.h"
#include "host/partkeep_read_impl.h"
#include "platform/control.h"
#include "resources/resource_ids.h"
#include "settings/process_values.h"
#include "tests/desktop/played_pane.h"
#include "tests/desktop/played_user.h"
#include "tests/support/memory_registry.h"

#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QHeaderView>
#include <QLabel>
#include <QLayout>
#include <QMetaEnum>
#include <QStyle>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include <cmath>

namespace partkeep {
namespace {

constexpr int dialog = RES_SELECTION_DIALOG;
constexpr int keypad = RES_QUANTITY_KEYPAD;
constexpr int list_window = RES_SELECTED_PARTS_DIALOG;

class CNoHiddenControls : public IHiddenControls {
public:
    std::unique_ptr<IHostedControl> CreateHidden(const ClassId&, std::int32_t, int, int) override { return nullptr; }
};

CBrowserPane& Pane()
{
    return *dynamic_cast<CBrowserPane*>(ControlOf(dialog, RES_BROWSER));
}

UserStep Folder(const char* name)
{
    return [name] {
        ClickInTree(Pane(), u"SRV1"_s, QString::fromUtf8(name));
        PressKey(dialog, Qt::Key_Right); // opens the branch
    };
}

UserStep Row(int row, Qt::KeyboardModifiers modifiers = {})
{
    return [=] { ClickRow(Pane(), row, modifiers); };
}

UserStep ListRow(int row, Qt::KeyboardModifiers modifiers = {})
{
    return [=] {
        auto& list = *dynamic_cast<QTreeWidget*>(ControlOf(list_window, RES_PART_LIST));
        ClickAt(*list.viewport(), list.visualItemRect(list.topLevelItem(row)).center(), modifiers);
    };
}

UserStep Focusing(int id)
{
    return [id] { ControlOf(dialog, id)->setFocus(); };
}

UserStep Expecting(const char* shown)
{
    return [shown] {
        Settle(Pane());
        EXPECT_EQ(ShownIn(Pane()), shown);
    };
}

class WholeDialog : public ::testing::Test {
protected:
    explicit WholeDialog(int language = 1)
    {
        libraries_.MakeShop();
        std::filesystem::create_directory(folder_.Path("Work"));
        registry_.Set(u"HKLM\\software\\Velmar\\ORVIC", u"installpath", folder_.Core());
        TheProcessValues().workingFolder = folder_.Core(u"Work\\");
        TheProcessValues().languageId = language;
    }

    // "P1 x2 0": name, quantity and machine type of each part that the host got, or "cancelled".
    std::string Run(bool several, std::vector<UserStep> steps)
    {
        PartkeepReadImpl host({registry_, messages_, controls_, windows_});
        std::filesystem::remove(folder_.Path("ZanPartkeepConfig.xml")); // a Load writes it
        steps.insert(steps.begin(), {Folder("SRV1"), Folder("Plates"), Folder("2008")});
        PlayWhile(std::move(steps), [&] { host.InvokePartkeepMultiSelection(several ? 1 : 0); });
        std::int32_t count = 0;
        host.NumberOfPartsSelected(&count);
        QStringList records;
        for (std::int32_t i = 0; i < count; ++i) {
            std::u16string name;
            std::u16string quantity;
            std::int32_t type = 0;
            host.GetPartInfo(i, nullptr, nullptr, nullptr, nullptr, nullptr, &name, nullptr, nullptr, nullptr, &type,
                             nullptr, &quantity);
            records += QString::fromStdU16String(name + u" x" + quantity) + u' ' + QString::number(type);
        }
        const bool loaded = std::filesystem::exists(folder_.Path("ZanPartkeepConfig.xml"));
        return loaded ? records.join(u", ").toStdString() : "cancelled";
    }

    CTestLibraries libraries_;
    CTemporaryFolder folder_;
    CMemoryRegistry registry_;
    CNoHiddenControls controls_;
    CPartBrowserFactory browsers_{CLibraryFolder(libraries_.Folder()), [] { return TheProcessValues().languageId; },
                                  libraries_.Folder() + u"/places.json"_s};
    CQtDialogWindows windows_{&browsers_};
    CQtMessages messages_;
};

// The shop's folder shows P1, P2, P10 at first.
TEST_F(WholeDialog, HostGetsWhatTheOperatorPicked)
{
    const UserStep add = Clicking(dialog, RES_ADD);
    const UserStep load = Clicking(dialog, RES_LOAD);
    const UserStep f6 = Pressing(dialog, Qt::Key_F6);
    const UserStep hidden = [] { EXPECT_EQ(WindowOf(list_window), nullptr); };
    const struct {
        const char* label;
        bool several;
        std::vector<UserStep> steps;
        const char* records;
    } rows[] = {
        {"Enter on Cancel loads", true, {Row(0), Focusing(RES_CANCEL), Pressing(dialog, Qt::Key_Return)}, "P1 x1 0"},
        {"Enter in the search loads", true, {Row(1), Typing(dialog, "p2"), Pressing(dialog, Qt::Key_Enter)}, "P2 x1 0"},
        {"Escape cancels", true, {Row(0), add, Pressing(dialog, Qt::Key_Escape)}, "cancelled"},
        {"Cancel", false, {Row(0), Clicking(dialog, RES_CANCEL)}, "cancelled"},
        {"Ctrl+A takes all of several",
         true,
         {Pressing(dialog, Qt::Key_F, Qt::ControlModifier), Typing(dialog, "1"), Expecting("P1 P10"),
          Pressing(dialog, Qt::Key_A, Qt::ControlModifier), load},
         "P1 x1 0, P10 x1 0"},
        {"Ctrl+A leaves a single one",
         false,
         {Row(1), Pressing(dialog, Qt::Key_A, Qt::ControlModifier), load},
         "P2 x1 0"},
        {"the last of several counts", false, {Row(0), Row(1, Qt::ControlModifier), load}, "P2 x1 0"},
        {"the list closed by its box is loaded whole",
         true,
         {Row(0), add, Row(1), add, [] { WindowOf(list_window)->close(); }, Row(2), load},
         "P1 x1 0, P2 x1 0, P10 x1 0"},
        {"rows of the list removed and changed, while the dialog waits",
         true,
         {Row(0), add, Row(1), Row(2, Qt::ShiftModifier), add, ListRow(1), Clicking(list_window, RES_REMOVE),
          ListRow(0), ListRow(1, Qt::ControlModifier), Clicking(list_window, RES_CHANGE_QUANTITY), load,
          Typing(keypad, "025"), Pressing(keypad, Qt::Key_Return), Row(1), load},
         "P1 x025 0, P10 x025 0, P2 x1 0"},
        {"F6 goes to the list and back, Enter and Escape there hide it",
         true,
         {Row(0), add, f6, Pressing(list_window, Qt::Key_F6), f6, ListRow(0), Pressing(list_window, Qt::Key_Return),
          hidden, Row(1), add, f6, Pressing(list_window, Qt::Key_Escape), hidden, load},
         "P1 x1 0, P2 x1 0"},
        {"check box, six typed characters, buttons beyond the limit",
         true,
         {Clicking(dialog, RES_ASK_QUANTITY), Row(0), add, Typing(keypad, "5"), Pressing(keypad, Qt::Key_Return),
          Row(1), Pressing(dialog, Qt::Key_Return), Typing(keypad, "123456"), Clicking(keypad, RES_DIGIT_7),
          Pressing(keypad, Qt::Key_Return),
          [] { EXPECT_EQ(AnswerMessage(), u"Please enter value within the range [1-99999]"_s); },
          Pressing(keypad, Qt::Key_Backspace), Clicking(keypad, RES_OK)},
         "P1 x5 0, P2 x12345 0"},
        {"filter buttons",
         true,
         {Clicking(dialog, RES_FILTER_NCT), Expecting("P1 p1"), Clicking(dialog, RES_FILTER_LASER), Expecting("P1 P10"),
          Row(0), load},
         "P1 x1 2"},
        {"unit box",
         false,
         {Row(0), Focusing(RES_UNIT), Pressing(dialog, Qt::Key_Down),
          [] { EXPECT_EQ(Pane().Model().HeaderText(PartColumn::Thickness), u"Thickness (inch)"_s); }, load},
         "P1 x1 0"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(Run(row.several, row.steps), row.records);
        EXPECT_TRUE(QApplication::topLevelWidgets().isEmpty());
    }
}

// Where the focus is: a control's number, or the name of what has it in the browser.
std::string FocusPlace()
{
    const QWidget* focused = WindowOf(dialog)->focusWidget();
    return (Pane().isAncestorOf(focused) ? focused->accessibleName() : focused->objectName()).toStdString();
}

TEST_F(WholeDialog, TabPassesThroughTheBrowserBothWays)
{
    std::string forward;
    std::string backward;
    std::vector<UserStep> steps{Focusing(RES_LOAD)};
    for (int press = 0; press < 9; ++press) {
        steps.push_back(Pressing(dialog, Qt::Key_Tab));
        steps.push_back([&] { forward += FocusPlace() + " "; });
    }
    for (int press = 0; press < 9; ++press) {
        steps.push_back(Pressing(dialog, Qt::Key_Backtab, Qt::ShiftModifier));
        steps.push_back([&] { backward += FocusPlace() + " "; });
    }
    steps.push_back(Pressing(dialog, Qt::Key_Escape));
    EXPECT_EQ(Run(true, steps), "cancelled");
    EXPECT_EQ(forward, "2 Places Servers and folders Search Columns Export Parts 202 201 ");
    EXPECT_EQ(backward, "202 Parts Export Columns Search Servers and folders Places 2 201 ");
}

// What a screen reader meets, in its order: "Role name" of each element that is shown, the list's cells included.
void Spoken(QAccessibleInterface& element, QStringList& all)
{
    static const auto roles = QMetaEnum::fromType<QAccessible::Role>();
    if (element.state().invisible) {
        return;
    }
    const QString name = element.text(QAccessible::Name);
    EXPECT_FALSE(name.contains(u'&')) << name.toStdString();
    EXPECT_TRUE(!name.isEmpty() || !element.state().focusable || element.role() == QAccessible::Cell);
    if (element.role() != QAccessible::Client && element.role() != QAccessible::Splitter) { // but for layout
        all += QString::fromLatin1(roles.valueToKey(element.role())) + u' ' + name;
    }
    for (int child = 0; child < element.childCount(); ++child) {
        if (QAccessibleInterface* inner = element.child(child)) {
            Spoken(*inner, all);
        }
    }
}

const char* const spoken_in_english =
    "Dialog Partkeep Read|Button OK|Button Cancel|EditableText Parts Name|EditableText Comment|StaticText Display Unit|"
    "StaticText Comment|StaticText Parts Name|StaticText 2D Image|StaticText 3D Image|CheckBox Input Quantity|Button "
    "Add|"
    "ComboBox Metric|EditableText Search|Button Columns|Button Export|Table Parts|Cell P1|Cell 1.50|Cell SPCC|"
    "Cell タレット|Cell 取付板|Cell P2|Cell 0.00|Cell |Cell |Cell |Cell P10|Cell -0.00|Cell |Cell |Cell |"
    "StaticText 3 parts   ·   2 selected|ButtonMenu Places|Tree Servers and folders|TreeItem SRV1|TreeItem Plates|"
    "TreeItem 2008|TreeItem 板金|Grip |Graphic 2D Image|Graphic 3D Image|ToolBar |CheckBox PART|CheckBox NCT|"
    "CheckBox LASER|CheckBox MARVEN|"
    "Dialog Selected Parts|Button Remove|Button Change Qty.|Tree Selected Parts|ColumnHeader Part Name|ColumnHeader "
    "Path|"
    "ColumnHeader Quantity|TreeItem P1|TreeItem SRV1\\Plates\\2008|TreeItem 1|"
    "Dialog Input Quantity|StaticText Part NO.|EditableText Part NO.|Button 1|Button 2|Button 3|Button 4|Button 5|"
    "Button 6|Button 7|Button 8|Button 9|Button 00|Button 0|Button OK|Button Cancel";

QPalette DarkPalette()
{
    QPalette dark(QColor(45, 45, 48));
    dark.setColor(QPalette::Base, QColor(30, 30, 30));
    dark.setColor(QPalette::Highlight, QColor(48, 140, 198));
    return dark;
}

double Luminance(const QColor& colour)
{
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

void ExpectReadable(const QWidget& widget)
{
    static constexpr std::pair<QPalette::ColorRole, QPalette::ColorRole> texts[] = {
        {QPalette::WindowText, QPalette::Window},
        {QPalette::Text, QPalette::Base},
        {QPalette::ButtonText, QPalette::Button},
        {QPalette::HighlightedText, QPalette::Highlight},
        {QPalette::PlaceholderText, QPalette::Base}};
    for (const auto group : {QPalette::Active, QPalette::Inactive}) {
        for (const auto& [text, ground] : texts) {
            const QColor colour = widget.palette().color(group, text);
            const auto [dark, light] =
                std::minmax({Luminance(colour), Luminance(widget.palette().color(group, ground))});
            EXPECT_GE((light + 0.05) / (dark + 0.05), 4.5) << widget.objectName().toStdString() << " " << text;
            EXPECT_EQ(colour.alpha(), 255) << text;
        }
    }
}

std::vector<QWidget*> ShownIn(const QWidget& parent)
{
    std::vector<QWidget*> shown;
    for (QWidget* child : parent.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (child->isVisible() && !child->isWindow()) {
            shown.push_back(child);
        }
    }
    return shown;
}

void ExpectNoOverlaps(const QWidget& parent)
{
    const auto shown = ShownIn(parent);
    for (auto left = shown.begin(); left != shown.end(); ++left) {
        EXPECT_TRUE(parent.rect().contains((*left)->geometry())) << (*left)->objectName().toStdString();
        for (auto right = left + 1; right != shown.end(); ++right) {
            EXPECT_FALSE((*left)->geometry().intersects((*right)->geometry()))
                << (*left)->objectName().toStdString() << " and " << (*right)->objectName().toStdString();
        }
    }
}

// What a caption needs at least, in its own font: its text alone, and where that is cut short the whole as tool tip.
void ExpectCaptionFits(const QWidget& control, const QString& text, int beside)
{
    const QSize needed = control.fontMetrics().size(Qt::TextSingleLine | Qt::TextShowMnemonic, text);
    EXPECT_LE(needed.width(), control.width() - beside) << text.toStdString();
    EXPECT_LE(control.fontMetrics().capHeight() + control.fontMetrics().descent(), control.height());
    EXPECT_TRUE(!text.contains(QChar(0x2026)) || !control.toolTip().isEmpty()) << text.toStdString();
}

void ExpectGoodLooks(QWidget& window)
{
    ExpectNoOverlaps(window);
    ExpectReadable(window);
    for (QWidget* widget : window.findChildren<QWidget*>()) {
        if (!widget->isVisible()) {
            continue;
        }
        ExpectReadable(*widget);
        if (widget->layout() != nullptr) {
            ExpectNoOverlaps(*widget);
        }
        if (const auto* label = qobject_cast<QLabel*>(widget)) {
            ExpectCaptionFits(*widget, label->text(), 0);
        } else if (const auto* tool = qobject_cast<QToolButton*>(widget)) {
            EXPECT_TRUE(tool->text().isEmpty() || widget->width() >= widget->sizeHint().width());
            EXPECT_GE(widget->height(), 26);
        } else if (const auto* button = qobject_cast<QAbstractButton*>(widget)) {
            ExpectCaptionFits(*widget, button->text(), qobject_cast<QCheckBox*>(widget) != nullptr ? 16 : 6);
        } else if (const auto* header = qobject_cast<QHeaderView*>(widget); header != nullptr && !header->isHidden()) {
            for (int column = 0; column < header->count(); ++column) {
                const QString text = header->model()->headerData(column, Qt::Horizontal).toString();
                EXPECT_GE(header->sectionSize(column), header->fontMetrics().horizontalAdvance(text));
            }
        }
    }
}

class Looks : public WholeDialog, public ::testing::WithParamInterface<std::tuple<int, bool>> {
protected:
    Looks() : WholeDialog(std::get<int>(GetParam()))
    {
        QApplication::setPalette(std::get<bool>(GetParam()) ? DarkPalette() : QApplication::style()->standardPalette());
        QAccessible::setActive(true);
    }
    ~Looks() override { QApplication::setPalette(QApplication::style()->standardPalette()); }

    void CheckWindows() const
    {
        const auto [language, dark] = GetParam();
        const QString pictures = qEnvironmentVariable("PARTKEEP_PICTURES");
        QStringList spoken;
        for (const int number : {dialog, list_window, keypad}) {
            SCOPED_TRACE(number);
            QWidget* window = WindowOf(number);
            ASSERT_NE(window, nullptr);
            ExpectGoodLooks(*window);
            Spoken(*QAccessible::queryAccessibleInterface(window), spoken);
            if (!pictures.isEmpty()) {
                window->grab().save(u"%1/%2_%3_%4_at_%5.png"_s.arg(pictures, window->objectName())
                                        .arg(language)
                                        .arg(dark ? u"dark"_s : u"light"_s)
                                        .arg(window->devicePixelRatio()));
            }
        }
        for (int id = RES_DIGIT_1; id <= RES_DIGIT_0; ++id) { // large enough for a finger
            EXPECT_GE(std::min(ControlOf(keypad, id)->height(), ControlOf(keypad, id)->width()), 44) << id;
        }
        if (language == 1) {
            EXPECT_EQ(spoken.join(u'|').toStdString(), spoken_in_english);
        }
    }
};

TEST_P(Looks, FromStartToTheHostsRecords)
{
    EXPECT_EQ(Run(true, {Row(0), Clicking(dialog, RES_ADD), Clicking(dialog, RES_ASK_QUANTITY), Row(1),
                         Row(2, Qt::ShiftModifier), Clicking(dialog, RES_ADD), [this] { CheckWindows(); },
                         Clicking(keypad, RES_DIGIT_1), Clicking(keypad, RES_DIGIT_00),
                         Pressing(keypad, Qt::Key_Return), Pressing(dialog, Qt::Key_Return)}),
              "P1 x1 0, P2 x100 0, P10 x100 0");
}

INSTANTIATE_TEST_SUITE_P(LanguagesAndThemes, Looks,
                         ::testing::Combine(::testing::Values(1, 2, 3), ::testing::Values(false, true)));

} // namespace
} // namespace partkeep
