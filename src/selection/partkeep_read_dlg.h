// The modal dialog in which the user picks parts: its state, and what it does from construction to close-down.
// The host object makes one for each run, sets three values, runs it and reads the result list. The operations
// stand in files of their own: load, add, dialog_shell, browser_click; the pictures are CPreviewImages.
#pragma once

#include "controls/kpd_key_manager.h"
#include "partdata/part_lookup.h"
#include "partdata/part_record.h"
#include "partdata/staging.h"
#include "platform/files.h"
#include "selection/event_door.h"
#include "selection/preview_images.h"
#include "selection/selected_parts_dlg.h"
#include "settings/local_strings.h"
#include "settings/machine_filter.h"
#include "settings/server_list_file.h"

#include <cstdint>
#include <list>
#include <memory>
#include <string>

namespace partkeep {

// Parts selected in the browser, in one Add or one Load; what is listed already does not count.
inline constexpr std::int32_t max_selected_parts = 256;

class CPartkeepReadDlg : private IDialogHandler {
public:
    // Makes sure of the unpack folder under the process's working folder.
    explicit CPartkeepReadDlg(IDialogWindows& windows);

    // Set by the host object before the run.
    std::u16string installFolder; // holds the two settings files
    std::u16string workingFolder;
    bool multiSelection = false;

    // Filled by a Load alone, read after id_ok.
    std::list<PartRecord> resultParts;

    // id_ok after a Load, anything else otherwise.
    int DoModal();

private:
    // Events, through the entrance.
    [[nodiscard]] IDialogHandler& Handler() { return *this; }
    void OnInitDialog() override;
    [[nodiscard]] bool TakesKey(const KeyPress& press) const override;
    void OnKey(const KeyPress& press) override;
    void OnCommand(int id) override;
    void OnSelectionChange(int id) override;
    void OnBrowserClick() override;
    void OnBrowserClickFailed() override { preview_->Blank(); }
    void OnPaint() override;
    void OnDestroy() override;
    [[nodiscard]] std::u16string ToolTipText(int command) override { return LoadLocalString(command); }

    // Start-up
    void CreateBrowser();
    void SetCaptions();
    void ReadOptions();
    void BuildToolbar();
    void HandStateToBrowser();
    void ConnectToLastPlace(const std::u16string& folder);
    void WalkToCurrentServer();
    void SendDisplayUnit();

    // Shell
    void OnTabKey(bool forward);
    void OnChoosePart();
    void OnUnitChange();
    void OnFilter(const MachineFilter& filter);
    void OnCancel();

    enum class ClickOutcome { NothingSelected, NothingKnown, PartShown };

    ClickOutcome FollowClick();
    void ShowPartTexts();

    // Add and Load
    void OnAdd();
    void AddSelectedParts(std::int32_t count, const std::u16string& staging_path, const std::u16string& quantity);
    void OpenSelectedParts();
    bool AskQuantity(std::u16string& quantity);
    void OnLoad();
    bool MayLoad(std::int32_t count, bool parts_listed, std::u16string& quantity);
    void StageSelection(std::int32_t count, const std::u16string& quantity, std::list<PartRecord>& load_list);
    void FillResultParts(const std::list<PartRecord>& load_list);
    void Tell(LocalString text);
    [[nodiscard]] std::u16string OptionsFilePath() const { return installFolder + u"\\ZanPartkeepConfig.xml"; }

    void CloseBrowser();

    CEventDoor door_;
    std::unique_ptr<CDialogEntrance> entrance_; // from the run's beginning on
    IDialogWindow* window_ = nullptr;           // the entrance's
    CKPDKeyManager browser_;
    bool browser_knows_state_ = false; // from the end of the start-up on
    ServerListState state_;            // currentServer, lastFolder, displayUnit, serverTable, viewState
    std::u16string lookupFolder_;      // the browser's folder at the last look-up
    MachineFilterState filter_;        // FilterState, dataKind
    OldFile options_file_ = OldFile::Dropped;
    StagingFolders folders_; // previewFolder, unpackFolder
    std::u16string partNameText_;
    std::u16string commentText_;
    IconHandle dialogIcon_ = nullptr;
    std::unique_ptr<CSelectedPartsDlg> selectedPartsDlg_; // from start-up on; its window from the first Add
    std::unique_ptr<CPreviewImages> preview_;
    std::unique_ptr<CPartLookup> lookup_;
};

} // namespace partkeep
