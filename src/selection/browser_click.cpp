// The browser's Click: shows the part under the cursor, and learns where the user is.

#include "platform/text.h"
#include "resources/resource_ids.h"
#include "selection/event_guards.h"
#include "selection/partkeep_read_dlg.h"

#include <array>

namespace partkeep {

namespace {

using ShortText = std::array<char, short_text_bytes>;

// Nothing in the contract keeps a browser from filling a buffer to its last byte.
std::u16string Widen(ShortText& text)
{
    text.back() = '\0';
    return WidenText(text.data());
}

} // namespace

void CPartkeepReadDlg::OnBrowserClick()
{
    window_->Invalidate();
    const ClickOutcome outcome = FollowClick();
    if (outcome == ClickOutcome::NothingSelected) {
        ShowPartTexts(); // those of the last part again
    }
    if (outcome == ClickOutcome::PartShown) {
        preview_->RefreshPreviewImages(workingFolder);
    }
}

CPartkeepReadDlg::ClickOutcome CPartkeepReadDlg::FollowClick()
{
    const CWaitIndication wait(*window_);
    preview_->Blank();
    window_->Fields().SetText(RES_PART_NAME, u"");
    window_->Fields().SetText(RES_COMMENT, u"");
    if (browser_.GetSelectedPartCount() == 0) {
        state_.currentServer = browser_.GetCurrentServer();
        return ClickOutcome::NothingSelected;
    }
    ShortText server{};
    ShortText folder{};
    ShortText name{};
    if (browser_.GetSelectedPart(0, server.data(), folder.data(), name.data()) == 0) {
        return ClickOutcome::NothingKnown;
    }
    partNameText_ = Widen(name);
    state_.currentServer = Widen(server);
    PartRecord record;
    lookup_->QueryPartInfo(state_.currentServer, Widen(folder), partNameText_, record);
    commentText_ = record.PartComment;
    ShowPartTexts();
    state_.lastFolder = browser_.GetCurrentFolder();
    return ClickOutcome::PartShown;
}

void CPartkeepReadDlg::ShowPartTexts()
{
    window_->Fields().SetText(RES_PART_NAME, partNameText_);
    window_->Fields().SetText(RES_COMMENT, commentText_);
}

} // namespace partkeep
