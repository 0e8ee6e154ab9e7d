// The two picture panes of the selection dialog: a 2D pane, where a bitmap panel and the picture control take
// turns on one spot, and a 3D pane. Fetches the pictures of the selected part and owns the blocks that they come
// in; panels only borrow them.
#pragma once

#include "controls/image_panel.h"
#include "controls/kpd_key_manager.h"
#include "controls/zan_pic_ctrl.h"
#include "platform/dialog_window.h"
#include "platform/memory_block.h"

#include <string>
#include <string_view>

namespace partkeep {

inline constexpr const char16_t* preview_folder_name = u"Lumora_ForPNG";

// Where the browser puts picture files: the working folder and the preview folder's name with a separator between
// them whatever the working folder ends in, each doubled backslash reduced to one, and a separator at the end.
[[nodiscard]] std::u16string PreviewPathOf(std::u16string_view working_folder);

class CPreviewImages {
public:
    CPreviewImages(IDialogWindow& window, CKPDKeyManager& browser) : window_(window), browser_(browser) {}
    ~CPreviewImages() { FreeBlocks(); }
    CPreviewImages(const CPreviewImages&) = delete;
    CPreviewImages& operator=(const CPreviewImages&) = delete;

    // Makes the two panels, each with a client area of 149 by 149, and binds the template's picture control.
    void Create();
    void Destroy(); // before the window's controls go

    // Both panes empty, the 2D pane showing its panel.
    void Blank();

    // Fetches and shows the pictures of the part that is selected now.
    void RefreshPreviewImages(std::u16string_view working_folder);

    void FreeBlocks();

private:
    struct Answers {
        bool png;
        bool image3D;
        bool image2D;
    };

    bool AllocateBlocks(); // tags included
    Answers ReadImages(std::u16string_view working_folder);
    bool ReadImage(std::u16string_view working_folder, MemoryHandle image);
    void ShowPicture(const std::u16string& preview_path);

    IDialogWindow& window_;
    CKPDKeyManager& browser_;
    CImagePanel panel2D_;
    CImagePanel panel3D_;
    CzXZanPicCtrl picture_;
    MemoryHandle image2D_ = nullptr;
    MemoryHandle image3D_ = nullptr;
    MemoryHandle imagePNG_ = nullptr; // only serves the request; the picture comes as a file
};

} // namespace partkeep
