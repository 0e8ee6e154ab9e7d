#include "controls/kpd_key_manager.h"
#include "controls/zan_pic_ctrl.h"
#include "tests/support/scripted_control.h"

#include <gtest/gtest.h>

#include <cstring>

namespace partkeep {
namespace {

using Manager = CKPDKeyManager;
using Result = std::variant<std::monostate, bool, std::int16_t, std::int32_t, std::u16string>;
using enum BrowserOperation;

// What the scripted control notes, types that are not the contract's included.
using Row = std::tuple<BrowserOperation, const char*, std::function<Result(Manager&)>>;

std::array<char, 2600> block{"PNG"};
std::array<std::int16_t, max_view_state_values> values;
ServerTable table{{{{'S', '1'}, {'S', '2'}}}};
PartAttributeBlocks attributes(u"P1");

const std::vector<Row> rows{
    {ConnectServer, "('S')", [](Manager& m) { return m.ConnectServer(u"S"); }},
    {DisconnectServer, "()", [](Manager& m) { return m.DisconnectServer(), Result(); }},
    {SetTargetFolder, "('F')", [](Manager& m) { return m.SetTargetFolder(u"F"); }},
    {GetPreviewFileTitle, "()", [](Manager& m) { return m.GetPreviewFileTitle(); }},
    {SetDataKind, "(24)", [](Manager& m) { return m.SetDataKind(24); }},
    {GetLastStatus, "()", [](Manager& m) { return m.GetLastStatus(); }},
    {GetCurrentServer, "()", [](Manager& m) { return m.GetCurrentServer(); }},
    {SetCurrentServer, "('S')", [](Manager& m) { return m.SetCurrentServer(u"S"), Result(); }},
    {SetDisplayUnit, "(1)", [](Manager& m) { return m.SetDisplayUnit(1), Result(); }},
    {SelectNextServer, "()", [](Manager& m) { return m.SelectNextServer(), Result(); }},
    {OpenFolderSelection, "()", [](Manager& m) { return m.OpenFolderSelection(), Result(); }},
    {SetCurrentFolder, "('F')", [](Manager& m) { return m.SetCurrentFolder(u"F"); }},
    {GetCurrentFolder, "()", [](Manager& m) { return m.GetCurrentFolder(); }},
    {RefreshPartList, "()", [](Manager& m) { return m.RefreshPartList(); }},
    {GetServerList, "()", [](Manager& m) { return m.GetServerList(table); }},
    {SetServerList, "('S1', 'S2')", [](Manager& m) { return m.SetServerList(table); }},
    {GetViewState, "()", [](Manager& m) { return m.GetViewState(values.data()); }},
    {GetViewStateCount, "()", [](Manager& m) { return m.GetViewStateCount(); }},
    {SetViewState, "()", [](Manager& m) { return m.SetViewState(values.data()), Result(); }},
    {SetPartFilter, "(10)", [](Manager& m) { return m.SetPartFilter(10); }},
    {ReadPartImage, "('W', 'PNG')", [](Manager& m) { return m.ReadPartImage(u"W", block.data(), values.data()); }},
    {MoveFocus, "(15)", [](Manager& m) { return m.MoveFocus(15); }},
    {CopyPartFiles, "('S', 'F\\P')", [](Manager& m) { return m.CopyPartFiles(u"S", u"F\\P"); }},
    {ReadPartAttributes, "('S', 'P1', 'P1')", [](Manager& m) { return m.ReadPartAttributes(u"S", u"P1", attributes); }},
    {GetSelectedPartCount, "()", [](Manager& m) { return m.GetSelectedPartCount(); }},
    {GetSelectedPart, "(3)", [](Manager& m) { return m.GetSelectedPart(3, block.data(), &block[256], &block[512]); }},
    {SelectAllParts, "(1)", [](Manager& m) { return m.SelectAllParts(1); }},
};

// What a control gives for a number, and with true as 1 what a member makes of it; 0 stands for no control too.
ControlResult Given(ControlType type, std::int32_t number)
{
    return type == ControlType::Text    ? ControlResult(std::u16string(number != 0 ? u"text" : u""))
           : type == ControlType::Int32 ? ControlResult(number)
           : type == ControlType::None  ? ControlResult()
                                        : ControlResult(static_cast<std::int16_t>(number));
}

Result Expected(ControlType type, std::int32_t number)
{
    return type == ControlType::Bool ? Result(number != 0)
                                     : std::visit([](const auto& value) { return Result(value); }, Given(type, number));
}

// Dispatch id, types of the arguments, type of the result, by the automation interface's numbers.
constexpr const char* types =
    "2: 8 >11, 3: >0, 10: 8 >11, 12: >8, 13: 2 >11, 14: >3, 15: >8, 16: 8 >0, 17: 2 >0, 27: >0, 29: >0, "
    "30: 8 >11, 31: >8, 36: >11, 38: 16397 >11, 39: 16397 >11, 40: 16386 >11, 41: >2, 43: 16386 >0, "
    "44: 2 >11, 47: 8 16397 16397 >11, 49: 2 >2, 56: 8 8 >11, "
    "57: 8 8 16392 16387 16387 16386 16392 16392 16392 16387 16387 16392 16386 16386 >11, 79: >3, "
    "80: 2 16392 16392 16392 >3, 100: 2 >2, ";

// An implementation without a member, or with a member of another result, does not compile.
struct Half {
    std::u16string GetImagePath();
    bool SecondOperation(AutomationObject*);
};
template <typename Operation>
constexpr bool answered = Operation::template answered_by<Operation, MemberCalls<Half>>;
static_assert(answered<picture::GetImagePath>);
static_assert(!answered<picture::SetImagePath> && !answered<picture::SecondOperation>);

TEST(KpdKeyManager, EachMemberCallsAsTheContractTells)
{
    ASSERT_EQ(rows.size(), browser_signatures.size());
    std::string told;
    for (std::size_t index = 0; index < rows.size(); ++index) {
        const auto& [operation, noted, call] = rows[index];
        const OperationSignature& signature = browser_signatures[index];
        ASSERT_EQ(operation, signature.operation);
        told += std::to_string(static_cast<int>(operation)) + ":";
        for (const ControlType type : signature.arguments) {
            told += " " + std::to_string(static_cast<int>(type));
        }
        told += " >" + std::to_string(static_cast<int>(signature.result)) + ", ";
        const bool counts = operation == GetViewStateCount || operation == GetSelectedPartCount;
        for (const std::int32_t number : {-1, 5}) {
            Recorder recorder;
            ControlScript script(recorder);
            script.On(operation, Given(signature.result, number));
            Manager manager;
            manager.Attach(script.MakeControl());
            EXPECT_EQ(call(manager), Expected(signature.result, counts ? std::max(number, 0) : number)) << noted;
            EXPECT_EQ(recorder.Take(), std::vector{signature.name + std::string(noted)});
        }
        Manager empty;
        EXPECT_EQ(call(empty), Expected(signature.result, 0)) << signature.name << " without control";
    }
    EXPECT_EQ(told, types);
}

TEST(KpdKeyManager, EndsTextsThatAControlFillsToTheBrim)
{
    Recorder recorder;
    ControlScript script(recorder);
    const auto fill = [](std::size_t argument, std::size_t bytes) {
        return [=](ControlScript::Arguments arguments) {
            for (std::size_t at = argument; at < arguments.size(); at += 2) {
                const bool text =
                    arguments[at].type != ControlType::Int32Ref && arguments[at].type != ControlType::Int16Ref;
                std::memset(std::get<void*>(arguments[at].value), 'x', text ? bytes : 1);
            }
            return ControlResult(std::int16_t{-1});
        };
    };
    Manager manager;
    manager.Attach(script.MakeControl());
    script.On(GetServerList, fill(0, sizeof(ServerTable)));
    ServerTable servers;
    manager.GetServerList(servers);
    for (const auto& slot : servers.slots) {
        EXPECT_EQ(std::strlen(slot.data()), server_slot_bytes - 1);
    }
    PartAttributeBlocks filled(std::u16string(300, u'n'));
    EXPECT_EQ(std::u16string(filled.part_name.data()), std::u16string(part_name_units - 1, u'n'));
    script.On(ReadPartAttributes, fill(6, long_text_bytes)); // 7 and 9 of the contract
    manager.ReadPartAttributes(u"S", u"P", filled);
    EXPECT_EQ(std::strlen(filled.material.data()), long_text_bytes - 1);
    EXPECT_EQ(std::strlen(filled.machine.data()), long_text_bytes - 1);
    script.On(ReadPartAttributes, fill(11, long_text_bytes)); // 12
    manager.ReadPartAttributes(u"S", u"P", filled);
    EXPECT_EQ(std::strlen(filled.comment.data()), long_text_bytes - 1);
}

// Notes each call by dispatch id and kind, with the types of its arguments and its result.
struct NotingControl : IHostedControl {
    explicit NotingControl(std::string& noted) : calls(noted) {}
    ControlResult Invoke(std::int32_t id, InvokeKind kind, std::span<const ControlArgument> arguments,
                         ControlType result) override
    {
        calls += (kind == InvokeKind::Method        ? "method "
                  : kind == InvokeKind::PropertyGet ? "get "
                                                    : "put ") +
                 std::to_string(id) + " (";
        for (const ControlArgument& argument : arguments) {
            calls += std::to_string(static_cast<int>(argument.type));
        }
        calls += ") " + std::to_string(static_cast<int>(result)) + "; ";
        const bool object = id == 2 && std::get<void*>(arguments[0].value) == this;
        return result == ControlType::Text ? ControlResult(u"path") : std::int16_t{object};
    }
    void SetEventSink(std::function<void(std::int32_t)>) override {}

    std::string& calls;
};

TEST(ZanPicCtrl, EachMemberCallsAsTheContractTells)
{
    CzXZanPicCtrl picture;
    picture.SetEventSink([](std::int32_t) {});
    picture.SetImagePath(u"");
    EXPECT_EQ(picture.GetImagePath(), u"") << "no control";
    std::string calls;
    auto control = std::make_unique<NotingControl>(calls);
    void* object = control.get();
    picture.Attach(std::move(control));
    picture.SetImagePath(u"C:\\P1.PNG");
    EXPECT_EQ(picture.GetImagePath(), u"path");
    EXPECT_EQ(picture.SecondOperation(object), 1);
    picture.AboutBox();
    EXPECT_EQ(calls, "put 1 (8) 0; get 1 () 8; method 2 (13) 2; method -552 () 0; ");
}

} // namespace
} // namespace partkeep
