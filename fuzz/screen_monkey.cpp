// Random input for the real dialog on a real X server: screen_monkey ACTIONS [FIRST], under a screen with nobody else
// on it. Keys, clicks, wheels, drags and words come several at a time while the dialog's thread is busy, at any window
// that is open; another process's changes of the libraries come between. A run of the dialog is a game of about a
// hundred actions, then the host's records are compared with what the libraries ever held. The first game in which
// something does not hold, a warning of the toolkit's included, ends the program and tells its last actions.
#include "fuzz/monkey_records.h"
#include "fuzz/monkey_shop.h"
#include "tests/desktop/whole_dialog.h"
#include "tests/desktop/x_close.h"

#include <QAbstractNativeEventFilter>
#include <QAccessible>
#include <QApplication>
#include <QFileDialog>
#include <QHeaderView>
#include <QMenu>
#include <QTimer>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <iostream>
#include <random>
#include <set>
#include <unistd.h>

namespace partkeep {
namespace {

namespace fs = std::filesystem;

constexpr int marker_key = 50; // Shift, which does nothing by itself: all input before it has come
constexpr int actions_of_a_game = 100;
constexpr int most_actions_to_close = 400;
constexpr unsigned longest_pause = 120; // seconds without a turn of the loop
constexpr int lost_marker_turns = 400;
const std::array<const char*, 40> keys{
    "Return",    "Return",    "Escape",     "Escape",       "Tab",       "Tab",        "shift+Tab", "space",
    "Up",        "Down",      "Left",       "Right",        "Home",      "End",        "Page_Up",   "Page_Down",
    "Delete",    "BackSpace", "F1",         "F5",           "ctrl+a",    "ctrl+c",     "ctrl+d",    "ctrl+f",
    "ctrl+z",    "alt+Up",    "alt+Left",   "shift+Down",   "shift+End", "ctrl+space", "ctrl+Down", "Menu",
    "shift+F10", "alt+o",     "alt+Return", "shift+ctrl+F", "ctrl+plus", "ctrl+minus", "F2",        "F6"};
const std::array<const char*, 12> letters{"p", "1", "2", "0", "5", "a", "k", "9", "period", "slash", "minus", "z"};

long game = 0;
std::deque<std::string> last_words;

[[noreturn]] void Fail(const std::string& what)
{
    std::cerr << "game " << game << " does not hold: " << what << "\n";
    for (const std::string& words : last_words) {
        std::cerr << "  " << words << "\n";
    }
    for (const QWidget* window : QApplication::topLevelWidgets()) {
        if (window->isVisible()) {
            const QWidget* focus = window->focusWidget();
            std::cerr << "open: " << window->metaObject()->className() << " \"" << window->windowTitle().toStdString()
                      << "\", focus in " << (focus == nullptr ? "none" : focus->metaObject()->className()) << "\n";
        }
    }
    std::abort();
}

void Require(bool holds, const std::string& what)
{
    holds ? void() : Fail(what);
}

void OnMessage(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    // The file dialog's button for a new folder, where the view cannot show one.
    // And its editor of a name, where the file list goes on to something else meanwhile.
    const bool of_files = qobject_cast<QFileDialog*>(QApplication::activeModalWidget()) != nullptr &&
                          text.endsWith(u"called with an editor that does not belong to this view");
    const bool known =
        of_files || text == u"edit: editing failed" || text.startsWith(u"QStandardPaths: XDG_RUNTIME_DIR");
    type == QtDebugMsg || type == QtInfoMsg || known ? void() : Fail("the toolkit says: " + text.toStdString());
}

// Passes calls on, one at a time, and can be asked what is selected.
class CWatchedControl : public IHostedControl {
public:
    explicit CWatchedControl(std::unique_ptr<IHostedControl> control) : control_(std::move(control)) { newest = this; }
    ~CWatchedControl() override { newest = newest == this ? nullptr : newest; }

    ControlResult Invoke(std::int32_t id, InvokeKind kind, std::span<const ControlArgument> arguments,
                         ControlType result) override
    {
        Require(++inside_ == 1, "no call comes inside a call");
        ControlResult answer = control_->Invoke(id, kind, arguments, result);
        --inside_;
        return answer;
    }
    void SetEventSink(std::function<void(std::int32_t)> sink) override
    {
        control_->SetEventSink([this, sink = std::move(sink)](std::int32_t event) {
            Require(inside_ == 0, "no event comes inside a call");
            sink(event);
        });
    }
    [[nodiscard]] int SelectedCount()
    {
        constexpr std::int32_t get_selected_part_count = 79;
        const ControlResult count = Invoke(get_selected_part_count, InvokeKind::Method, {}, ControlType::Int32);
        return std::get<std::int32_t>(count);
    }

    static inline CWatchedControl* newest = nullptr;

private:
    std::unique_ptr<IHostedControl> control_;
    int inside_ = 0;
};

class CWatchedFactory : public IQtControlFactory {
public:
    explicit CWatchedFactory(IQtControlFactory& factory) : factory_(factory) {}
    [[nodiscard]] std::unique_ptr<IHostedControl> Create(const ClassId& id, QWidget* parent, QWidget*& widget) override
    {
        auto control = factory_.Create(id, parent, widget);
        return control == nullptr ? nullptr : std::make_unique<CWatchedControl>(std::move(control));
    }

private:
    IQtControlFactory& factory_;
};

class CMonkey : public QAbstractNativeEventFilter {
public:
    explicit CMonkey(CMonkeyShop& shop) : shop_(shop)
    {
        qApp->installNativeEventFilter(this);
        QObject::connect(&turns_, &QTimer::timeout, &turns_, [this] { Turn(); });
    }

    bool nativeEventFilter(const QByteArray&, void* message, qintptr*) override
    {
        constexpr int key_press = 2;
        const auto* bytes = static_cast<const std::uint8_t*>(message);
        came_ = came_ || ((bytes[0] & 0x7F) == key_press && bytes[1] == marker_key);
        return false;
    }

    void Begin(long number)
    {
        random_.seed(static_cast<unsigned>(number));
        actions_ = waited_ = 0;
        came_ = true;
        listed_.clear();
        turns_.start(5);
    }
    int End()
    {
        turns_.stop();
        return actions_;
    }
    [[nodiscard]] const QStringList& Listed() const { return listed_; }

private:
    unsigned Next() { return static_cast<unsigned>(random_() >> 8); }
    unsigned Below(std::size_t limit) { return Next() % static_cast<unsigned>(limit); }

    void Turn()
    {
        alarm(longest_pause);
        if (!came_ && ++waited_ < lost_marker_turns) {
            return; // nobody has the focus at times, and then the marker is lost
        }
        if (QWidget* window = WindowOf(dialog); window != nullptr && ++waited_ > 2) {
            waited_ = 0;
            came_ = false;
            Compare(*window);
            Require(actions_ < actions_of_a_game + most_actions_to_close, "a dialog can be left");
            Send(actions_ < actions_of_a_game ? 1 + static_cast<int>(Below(4)) : 1);
        }
    }

    // What must hold while nothing is open above the dialog.
    void Compare(QWidget& window)
    {
        QWidget* modal = QApplication::activeModalWidget();
        if ((modal != nullptr && modal != &window) || QApplication::activePopupWidget() != nullptr ||
            CWatchedControl::newest == nullptr) {
            return;
        }
        CBrowserPane& pane = Pane();
        const auto selected = pane.List().selectionModel()->selectedRows().size();
        const int told = CWatchedControl::newest->SelectedCount();
        Require(told == selected || told == 0,
                "what is shown as selected is: " + std::to_string(selected) + ", told " + std::to_string(told));
        listed_.clear();
        const auto* list = dynamic_cast<QTreeWidget*>(ControlOf(list_window, RES_PART_LIST));
        for (int row = 0; list != nullptr && row < list->topLevelItemCount(); ++row) {
            listed_ += list->topLevelItem(row)->text(1) + u'\\' + list->topLevelItem(row)->text(0);
        }
        Require(QSet<QString>(listed_.begin(), listed_.end()).size() == listed_.size(), "a part is listed once");
    }

    void Send(int count)
    {
        std::string words;
        for (int i = 0; i < count; ++i) {
            ++actions_;
            if (Below(12) == 0) {
                shop_.Change(Next());
            }
            if (Below(10) == 0) {
                QTimer::singleShot(0, &turns_, [seed = Next()] { HelpSomebody(seed); });
            }
            if (Below(400) == 0) {
                AskToClose(WindowOf(dialog)->winId());
            }
            words += actions_ < actions_of_a_game ? Action() : Leaving();
        }
        last_words.push_back(words);
        last_words.size() > 12 ? last_words.pop_front() : void();
        const std::string command = "xdotool " + words + "key --delay 0 Shift_L 2>>xdotool.log";
        Require(std::system(command.c_str()) == 0, "input can be sent");
    }

    // OK, or Cancel where there is nothing to load, or whatever closes what is above.
    std::string Leaving()
    {
        QWidget* modal = QApplication::activeModalWidget();
        const bool above = QApplication::activePopupWidget() != nullptr || modal != WindowOf(dialog);
        return above ? Focus() + "key --delay 0 " + (Below(2) == 0 ? "Escape " : "Return ")
                     : PointAt(ControlOf(dialog,
                                         game % 4 == 0 || actions_ > actions_of_a_game + 50 ? id_cancel : RES_LOAD)) +
                           "mousedown 1 mouseup 1 ";
    }

    std::string Action()
    {
        const unsigned choice = Below(100);
        const std::string key = keys[Below(keys.size())];
        if (Below(6) == 0) {
            return Purpose();
        }
        if (qobject_cast<QFileDialog*>(QApplication::activeModalWidget()) != nullptr && Below(3) == 0) {
            return Focus() + "key --delay 0 Return ";
        }
        const bool leaves =
            (key == "Return" || key == "Escape") && QApplication::activeModalWidget() == WindowOf(dialog);
        if (choice < 30 && (!leaves || Below(8) == 0)) {
            return Focus() + "key --delay 0 " + key + " ";
        }
        if (choice >= 30 && choice < 33) {
            return std::string("key --delay 0 ") + letters[Below(letters.size())] + " ";
        }
        if (choice < 58) {
            return Row() + Button() + (Below(3) == 0 ? PointAt(ControlOf(dialog, RES_ADD)) + one_click : "");
        }
        if (choice < 62) {
            return Row() + "mousedown 1 " + PointAt(ControlOf(list_window, RES_PART_LIST)) +
                   "mousemove_relative 3 3 mouseup 1 ";
        }
        if (choice < 77) {
            static constexpr int ids[] = {RES_ADD,     RES_ADD,         RES_ADD,          RES_ASK_QUANTITY,
                                          RES_UNIT,    RES_FILTER_PART, RES_FILTER_LASER, RES_FILTER_NCT,
                                          RES_BROWSER, RES_PICTURE,     RES_LOAD};
            return PointAt(ControlOf(dialog, ids[Below(std::size(ids))])) + one_click;
        }
        return Somewhere() + Button();
    }

    // What takes several steps in their order, so that chance alone hardly comes by it.
    std::string Purpose()
    {
        static constexpr const char* right_click = "mousedown 3 mouseup 3 ";
        const std::string row = Row();
        switch (Below(8)) {
        case 0:
            return row + one_click + Row() + right_click + Choice();
        case 6: // to the list, by what is selected; its second press lies too far away for a double click
            return row + one_click + "mousemove_relative 40 0 mousedown 1 mousemove_relative 14 0 " +
                   PointAt(ControlOf(list_window, RES_PART_LIST)) + "mousemove_relative 3 3 mouseup 1 ";
        case 7: // the menu's last entry exports
            return row + one_click + right_click + "key --delay 0 Up space ";
        case 1:
            return Heading(false) + right_click + Choice();
        case 2:
            return Heading(true) + "mousedown 1 mousemove_relative 9 0 " + Heading(false) + "mouseup 1 ";
        case 3:
            return Heading(false) + "mousedown 1 mousemove_relative 25 0 " + Heading(false) + "mouseup 1 ";
        case 4:
            return std::string("key --delay 0 ") + (Below(2) == 0 ? "ctrl+f" : "shift+ctrl+F") +
                   " key --delay 0 ctrl+a key --delay 0 " + letters[Below(letters.size())] + " key --delay 0 " +
                   keys[8 + Below(8)] + " ";
        default: // the folder's menu, the server's, or what a server offers
            return Point(*Pane().findChild<QTreeView*>()->viewport(), {40, 10 + static_cast<int>(Below(120))}) +
                   one_click + "key --delay 0 " + keys[8 + Below(8)] + " " + right_click + Choice();
        }
    }
    std::string Choice()
    {
        std::string steps = "key --delay 0 ";
        for (unsigned left = 1 + Below(12); left > 0; --left) {
            steps += "Down ";
        }
        return steps + (Below(4) == 0 ? "Right Down space " : "space "); // where no menu is, it ends nothing
    }
    // In the middle of a column's heading, or at its edge.
    std::string Heading(bool edge)
    {
        const QHeaderView& header = Pane().List().Header();
        const int column = static_cast<int>(Below(static_cast<std::size_t>(header.count())));
        const int size = header.sectionSize(column);
        return Point(*header.viewport(),
                     {header.sectionViewportPosition(column) + (edge ? size - 1 : size / 2), header.height() / 2});
    }

    // What a screen reader asks and does while nothing is open above the dialog.
    static void HelpSomebody(unsigned seed)
    {
        QWidget* window = WindowOf(dialog);
        if (window == nullptr || QApplication::activeModalWidget() != window ||
            QApplication::activePopupWidget() != nullptr || CWatchedControl::newest == nullptr) {
            return;
        }
        Hear(*QAccessible::queryAccessibleInterface(window), 0);
        CPartListView& list = Pane().List();
        auto* table = QAccessible::queryAccessibleInterface(&list)->tableInterface();
        Require(table->selectedRowCount() == list.selectionModel()->selectedRows().size(), "as many rows are told");
        for (QAccessibleInterface* cell : table->selectedCells()) {
            Require(cell->state().selected, "a cell that is told as selected is");
        }
        const int row = static_cast<int>(seed % 60);
        auto* cell = table->cellAt(row, static_cast<int>(seed / 64) % table->columnCount());
        Require((cell != nullptr) == (row < table->rowCount()), "each row has its cells");
        if (cell != nullptr) {
            Require(cell->parent()->child(cell->parent()->indexOfChild(cell)) == cell, "a cell is found at its place");
            seed % 3 == 0 ? table->unselectRow(row) : table->selectRow(row);
        }
    }
    static void Hear(QAccessibleInterface& spoken, int depth)
    {
        constexpr int deepest = 12;
        constexpr int most_children = 40;
        for (const auto text : {QAccessible::Name, QAccessible::Description, QAccessible::Value, QAccessible::Help}) {
            spoken.text(text);
        }
        spoken.state();
        spoken.focusChild();
        spoken.childAt(spoken.rect().center().x(), spoken.rect().center().y());
        const int count = depth < deepest ? std::min(spoken.childCount(), most_children) : 0;
        for (int at = 0; at < count; ++at) {
            if (QAccessibleInterface* child = spoken.child(at); child != nullptr && child->isValid()) {
                Hear(*child, depth + 1);
            }
        }
    }

    static constexpr const char* one_click = "mousedown 1 mouseup 1 ";
    std::string Button()
    {
        static constexpr const char* presses[] = {one_click,
                                                  one_click,
                                                  "mousedown 1 mouseup 1 mousedown 1 mouseup 1 ",
                                                  "mousedown 3 mouseup 3 ",
                                                  "click --delay 0 4 ",
                                                  "click --delay 0 5 ",
                                                  "keydown ctrl mousedown 1 mouseup 1 keyup ctrl ",
                                                  "keydown shift mousedown 1 mouseup 1 keyup shift "};
        return presses[Below(std::size(presses))];
    }
    // Without a window manager the focus stays with a window that has gone, or that is behind a modal one.
    static std::string Focus()
    {
        const QWidget* modal = QApplication::activeModalWidget();
        const QWidget* active = QApplication::activeWindow();
        const bool elsewhere = active == nullptr || (modal != nullptr && modal != WindowOf(dialog) && active != modal);
        return modal != nullptr && elsewhere && QApplication::activePopupWidget() == nullptr
                   ? "windowfocus " + std::to_string(modal->winId()) + " "
                   : "";
    }
    static std::string PointAt(const QWidget* widget)
    {
        return widget == nullptr ? "" : Point(*widget, widget->rect().center());
    }
    static std::string Point(const QWidget& widget, const QPoint& at)
    {
        const QPoint place = widget.mapToGlobal(at);
        return "mousemove " + std::to_string(std::max(0, place.x())) + " " + std::to_string(std::max(0, place.y())) +
               " ";
    }
    std::string Row()
    {
        QWidget* list = Pane().List().viewport();
        return Point(*list, {20 + static_cast<int>(Below(200)),
                             static_cast<int>(Below(static_cast<std::size_t>(list->height())))});
    }
    // In any widget of the topmost window, or now and then of another.
    std::string Somewhere()
    {
        QList<QWidget*> windows;
        for (QWidget* window : QApplication::topLevelWidgets()) {
            window->isVisible() ? windows.append(window) : void();
        }
        QWidget* top = QApplication::activePopupWidget() != nullptr ? QApplication::activePopupWidget()
                                                                    : QApplication::activeModalWidget();
        QWidget* window =
            top != nullptr && Below(3) != 0 ? top : windows[Below(static_cast<std::size_t>(windows.size()))];
        QList<QWidget*> all{window};
        for (QWidget* child : window->findChildren<QWidget*>()) {
            child->isVisible() ? all.append(child) : void();
        }
        const QWidget& widget = *all[Below(static_cast<std::size_t>(all.size()))];
        const auto inside = [this](int size) {
            return static_cast<int>(Below(static_cast<std::size_t>(std::max(1, size))));
        };
        return Point(widget, {inside(widget.width()), inside(widget.height())});
    }

    CMonkeyShop& shop_;
    std::mt19937 random_;
    QTimer turns_;
    bool came_ = true;
    int waited_ = 0;
    int actions_ = 0;
    QStringList listed_; // when it was looked at last
};

// What the host gets; how many.
long CheckRecords(PartkeepReadImpl& host)
{
    std::int32_t count = 0;
    host.NumberOfPartsSelected(&count);
    std::set<std::string> seen;
    for (std::int32_t i = 0; i < count; ++i) {
        PartRecord part;
        host.GetPartInfo(i, &part.serverName, &part.folderName, &part.FilePathName, &part.SYFileName, &part.NCFileName,
                         &part.PartName, nullptr, nullptr, nullptr, &part.MachineType, nullptr, &part.Qty);
        const auto text = [](const std::u16string& of_part) { return NarrowText(of_part, utf8_code_page); };
        const std::string mark = text(part.serverName) + "|" + text(part.folderName) + "|" + text(part.PartName);
        Require(seen.insert(mark).second, "a part is loaded once: " + mark);
        Require(!part.FilePathName.empty(), "a loaded part has a file: " + mark);
        Require(IsQuantity(part.Qty), "a quantity is one: " + text(part.Qty));
        for (const std::u16string& file : {part.FilePathName, part.SYFileName, part.NCFileName}) {
            std::string native = text(file);
            std::replace(native.begin(), native.end(), '\\', '/');
            const std::string fault = native.empty() ? ""
                                                     : CMonkeyShop::FaultIn(native, text(part.serverName),
                                                                            text(part.folderName), text(part.PartName));
            Require(fault.empty(), fault);
        }
    }
    Require(count <= 512, "no more parts are loaded than can be listed and selected");
    return count;
}

void OnAlarm(int)
{
    constexpr char text[] = "the dialog's thread has stopped\n";
    (void)!write(2, text, sizeof text - 1);
    std::abort();
}

void Play(long wanted, long first)
{
    CTemporaryFolder folder;
    fs::create_directory(folder.Path("Work"));
    CMonkeyShop shop(folder.Path("Libraries"));
    CMemoryRegistry registry;
    registry.Set(u"HKLM\\software\\Velmar\\ORVIC", u"installpath", folder.Core());
    CPartBrowserControls controls{CLibraryFolder(shop.Folder())};
    CPartBrowserFactory browsers{CLibraryFolder(shop.Folder()), [] { return TheProcessValues().languageId; },
                                 QString::fromStdString(folder.Path("places.json").string())};
    CWatchedFactory watched(browsers);
    CQtDialogWindows windows(&watched);
    CQtMessages messages;
    CMonkey monkey(shop);
    long actions = 0;
    long parts = 0;
    for (game = first; actions < wanted; ++game) {
        TheProcessValues() = {folder.Core(u"Work\\"), static_cast<std::int32_t>(game % 3)};
        PartkeepReadImpl host({registry, messages, controls, windows});
        monkey.Begin(game);
        host.InvokePartkeepMultiSelection(game % 5 == 0 ? 0 : 1);
        actions += monkey.End();
        Require(QApplication::activeModalWidget() == nullptr, "nothing stays open");
        parts += CheckRecords(host);
        shop.GiveBack();
    }
    TheProcessValues() = {};
    std::cout << game - first << " games, " << actions << " actions, " << parts << " parts loaded, no fault\n";
}

} // namespace
} // namespace partkeep

int main(int argc, char** argv)
{
    const long wanted = argc > 1 ? std::atol(argv[1]) : 1000;
    const long first = argc > 2 ? std::atol(argv[2]) : 0;
    QApplication application(argc, argv);
    qInstallMessageHandler(partkeep::OnMessage);
    std::signal(SIGALRM, partkeep::OnAlarm);
    partkeep::Play(wanted, first);
}
