// Construction, start-up and close-down of the selection dialog.

#include "selection/partkeep_read_dlg.h"

#include "partdata/plain_message.h"
#include "platform/files.h"
#include "platform/text.h"
#include "resources/dialog_templates.h"
#include "resources/resource_ids.h"
#include "selection/event_guards.h"
#include "settings/options_file.h"
#include "settings/process_values.h"

namespace partkeep {

namespace {

// The bar's own height plays no part: the templates leave this much room for it.
constexpr int toolbar_room = 20;

constexpr std::int16_t metric = 0;

} // namespace

CPartkeepReadDlg::CPartkeepReadDlg(IDialogWindows& windows) : door_(windows)
{
    folders_.unpackFolder = TheProcessValues().workingFolder + u"UnZipFolder";
    MakeFolder(folders_.unpackFolder);
    folders_.unpackFolder += u"\\";
}

int CPartkeepReadDlg::DoModal()
{
    entrance_ = std::make_unique<CDialogEntrance>(door_, selection_dialog_template, Handler());
    window_ = &entrance_->Window();
    lookup_ = std::make_unique<CPartLookup>(browser_, entrance_->OwnerMessages(),
                                            LookupState{state_.currentServer, lookupFolder_, filter_});
    preview_ = std::make_unique<CPreviewImages>(*window_, browser_);
    return entrance_->RunModal();
}

void CPartkeepReadDlg::OnInitDialog()
{
    dialogIcon_ = window_->ParentSmallIcon();
    window_->SetSmallIcon(dialogIcon_);
    selectedPartsDlg_ = std::make_unique<CSelectedPartsDlg>(door_, dialogIcon_);
    CreateBrowser();
    folders_.previewFolder = TheProcessValues().workingFolder + preview_folder_name;
    MakeDirectory(folders_.previewFolder);
    preview_->Create();
    window_->Fields().SetReadOnly(RES_PART_NAME);
    window_->Fields().SetReadOnly(RES_COMMENT);
    SetCaptions();
    LoadServerList(state_, installFolder, browser_);
    const std::u16string folder_to_restore = state_.lastFolder;
    SendDisplayUnit();
    if (state_.displayUnit != metric) {
        browser_.RefreshPartList();
    }
    ReadOptions();
    BuildToolbar();
    window_->Fields().SelectEntry(RES_UNIT, state_.displayUnit);
    ShowPartTexts();
    HandStateToBrowser();
    window_->UpdateNow();
    browser_.MoveFocus(focus_at_start);
    window_->Fields().Focus(RES_BROWSER);
    ConnectToLastPlace(folder_to_restore);
    browser_knows_state_ = true;
}

// Without a browser the dialog opens all the same, and every call on it then does nothing.
void CPartkeepReadDlg::CreateBrowser()
{
    const Rect client = window_->ClientRect();
    browser_.Attach(window_->CreateHostedControl(
        part_browser_class_id, RES_BROWSER, {client.left + 5, client.top + 10, client.right - 5, client.bottom - 230}));
    if (!browser_.HasControl()) {
        entrance_->OwnerMessages().Show({cannot_be_started_text, cannot_be_started_title, MessageKind::Exclamation});
        return;
    }
    browser_.SetCallWatch(entrance_.get());
    browser_.SetEventSink([this](std::int32_t event) { entrance_->OnBrowserEvent(event); });
}

void CPartkeepReadDlg::SetCaptions()
{
    IDialogFields& fields = window_->Fields();
    fields.SetText(RES_CAPTION_3D, LoadLocalString(LocalString::Image3D));
    fields.SetText(RES_CAPTION_2D, LoadLocalString(LocalString::Image2D));
    fields.SetText(RES_UNIT_CAPTION, LoadLocalString(LocalString::DisplayUnit));
    fields.SetText(RES_PART_NAME_CAPTION, LoadLocalString(LocalString::PartsName) + u" (&P)");
    fields.SetText(RES_COMMENT_CAPTION, LoadLocalString(LocalString::Comment));
    fields.SetText(RES_LOAD, LoadLocalString(LocalString::Ok));
    fields.SetText(id_cancel, LoadLocalString(LocalString::Cancel));
    fields.SetText(RES_ADD, LoadLocalString(LocalString::Add));
    fields.SetText(RES_ASK_QUANTITY, LoadLocalString(LocalString::InputQuantity));
    fields.ResetEntries(RES_UNIT);
    fields.InsertEntry(RES_UNIT, 0, LoadLocalString(LocalString::Metric));
    fields.InsertEntry(RES_UNIT, 1, LoadLocalString(LocalString::Inch));
}

void CPartkeepReadDlg::ReadOptions()
{
    SelectionOptions options{.filterState = filter_.FilterState};
    options_file_ = ReadOptionsFile(OptionsFilePath(), options);
    filter_.FilterState = options.filterState;
    if (const MachineFilter* filter = FindFilterByState(filter_.FilterState)) {
        filter_.dataKind = filter->dataKind;
    }
    window_->Fields().SetCheck(RES_ASK_QUANTITY, options.quantityPrompt);
}

void CPartkeepReadDlg::BuildToolbar()
{
    IToolbar& bar = window_->Toolbar();
    bar.CreateToolbar(filter_toolbar_template);
    const int shift = bar.ClientRectBesideToolbar().left - window_->ClientRect().left;
    bar.MoveAllControls(shift, toolbar_room);
    bar.PlaceToolbar();
    bar.EnableToolTips();
    if (const MachineFilter* filter = FindFilterByState(filter_.FilterState)) {
        bar.PressTool(filter->command, true);
    }
}

void CPartkeepReadDlg::HandStateToBrowser()
{
    browser_.SetPartFilter(filter_.dataKind);
    browser_.SetServerList(state_.serverTable);
    if (!state_.viewState.empty()) {
        browser_.SetViewState(PaddedViewState(state_.viewState).data());
    }
}

// `folder` is the one that the settings file told: on a server that is gone, the browser may have moved on since.
void CPartkeepReadDlg::ConnectToLastPlace(const std::u16string& folder)
{
    browser_.ConnectServer(state_.currentServer);
    browser_.SetCurrentServer(state_.currentServer);
    WalkToCurrentServer();
    if (!folder.empty()) {
        browser_.OpenFolderSelection();
        browser_.SetCurrentFolder(folder);
    }
}

// Leaves the browser's cursor on the current server, or at the end of the list where that is not in the table.
void CPartkeepReadDlg::WalkToCurrentServer()
{
    for (const auto& slot : state_.serverTable.slots) {
        if (slot.front() == '\0' || WidenText(slot.data()) == state_.currentServer) {
            return;
        }
        browser_.SelectNextServer();
    }
}

// On every way out, while the controls still stand.
void CPartkeepReadDlg::OnDestroy()
{
    if (selectedPartsDlg_ != nullptr) {
        selectedPartsDlg_->EmptyAndDestroy();
    }
    const CLastly close([this] { CloseBrowser(); });
    // Where the start ended half-way the browser knows nothing that may replace what is stored.
    if (browser_.HasControl() && browser_knows_state_) {
        // A copy: the window may go while a call holds texts of the state itself.
        ServerListState closing = state_;
        SaveServerList(closing, installFolder, browser_);
    }
}

// A call that the window's end has overtaken may still write into its block; that one goes with the dialog.
void CPartkeepReadDlg::CloseBrowser()
{
    const CLastly detach([this] {
        preview_->Destroy();
        browser_.Detach();
    });
    if (!browser_.HasControl()) {
        return;
    }
    if (!door_.CallUnderWay()) {
        preview_->FreeBlocks();
    }
    browser_.DisconnectServer();
}

void CPartkeepReadDlg::Tell(LocalString text)
{
    ShowPlainMessage(entrance_->OwnerMessages(), text);
}

} // namespace partkeep
