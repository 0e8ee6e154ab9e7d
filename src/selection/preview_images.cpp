#include "selection/preview_images.h"

#include "partdata/staging.h"
#include "platform/files.h"
#include "resources/resource_ids.h"
#include "selection/event_door.h"
#include "selection/event_guards.h"

#include <array>
#include <cstring>

namespace partkeep {

namespace {

constexpr int pane_extent = 149; // width and height of a pane's client area
constexpr std::string_view tag2D = "2D";
constexpr std::string_view tag3D = "3D";
constexpr std::string_view tagPNG = "PNG";

void WriteTag(MemoryHandle block, std::string_view tag)
{
    const CBlockLock lock(block);
    std::memcpy(lock.Address(), tag.data(), tag.size());
}

void Free(MemoryHandle& block)
{
    if (block != nullptr) {
        FreeBlock(block);
        block = nullptr;
    }
}

} // namespace

std::u16string PreviewPathOf(std::u16string_view working_folder)
{
    const std::u16string joined = std::u16string(working_folder) + u'\\' + preview_folder_name;
    std::u16string path;
    for (std::size_t at = 0; at < joined.size(); ++at) {
        path += joined[at];
        if (joined.compare(at, 2, u"\\\\") == 0) {
            ++at;
        }
    }
    return path + u"\\";
}

void CPreviewImages::Create()
{
    const Rect client = window_.ClientRect();
    panel2D_.Attach(window_.CreatePanel(RES_IMAGE_PANEL,
                                        {client.left + 5, client.bottom - 190, client.left + 155, client.bottom - 40}),
                    CDialogEntrance::Guarded);
    panel3D_.Attach(window_.CreatePanel(RES_IMAGE_PANEL, {client.left + 175, client.bottom - 190, client.left + 325,
                                                          client.bottom - 40}),
                    CDialogEntrance::Guarded);
    panel3D_.SetClientExtent(pane_extent);
    panel2D_.SetClientExtent(pane_extent);
    picture_.Attach(window_.TemplateControl(RES_PICTURE));
    window_.Fields().ShowControl(RES_PICTURE, false); // it stands in the template, on the panel's spot
}

void CPreviewImages::Destroy()
{
    picture_.Detach();
    panel2D_.Detach();
    panel3D_.Detach();
}

void CPreviewImages::Blank()
{
    panel3D_.SetImage(nullptr);
    panel2D_.SetImage(nullptr);
    window_.Fields().ShowControl(RES_PICTURE, false);
    panel2D_.Show(true);
    picture_.SetImagePath(u"");
}

void CPreviewImages::RefreshPreviewImages(std::u16string_view working_folder)
{
    const CWaitIndication wait(window_);
    FreeBlocks();
    if (!AllocateBlocks()) {
        return;
    }
    const std::u16string preview_path = PreviewPathOf(working_folder);
    MakeFolder(preview_path);
    const Answers answers = ReadImages(working_folder);
    if (browser_.GetLastStatus() == status_list_outdated) {
        browser_.RefreshPartList();
    }
    window_.Invalidate();
    if (!answers.png && !answers.image3D && !answers.image2D) {
        return;
    }
    if (answers.png) {
        ShowPicture(preview_path);
    } else if (answers.image2D) {
        window_.Fields().ShowControl(RES_PICTURE, false);
        panel2D_.Show(true);
        panel2D_.SetImage(image2D_);
    }
    panel3D_.SetImage(image3D_);
}

void CPreviewImages::FreeBlocks()
{
    Free(image2D_);
    Free(image3D_);
    Free(imagePNG_);
}

bool CPreviewImages::AllocateBlocks()
{
    for (MemoryHandle* image : {&image2D_, &image3D_, &imagePNG_}) {
        *image = AllocateBlock(image_block_bytes);
        if (*image == nullptr) {
            return false;
        }
    }
    WriteTag(image2D_, tag2D);
    WriteTag(image3D_, tag3D);
    WriteTag(imagePNG_, tagPNG);
    return true;
}

CPreviewImages::Answers CPreviewImages::ReadImages(std::u16string_view working_folder)
{
    Answers answers{};
    answers.png = ReadImage(working_folder, imagePNG_);
    answers.image3D = ReadImage(working_folder, image3D_);
    answers.image2D = ReadImage(working_folder, image2D_);
    for (const auto& [answer, image] :
         {std::pair{answers.png, &imagePNG_}, {answers.image3D, &image3D_}, {answers.image2D, &image2D_}}) {
        if (!answer) {
            Free(*image);
        }
    }
    return answers;
}

bool CPreviewImages::ReadImage(std::u16string_view working_folder, MemoryHandle image)
{
    std::array<std::byte, scratch_block_bytes> scratch{};
    const CBlockLock lock(image);
    return browser_.ReadPartImage(working_folder, lock.Address(), scratch.data());
}

// The picture takes the panel's spot and size: its own top left corner stays.
void CPreviewImages::ShowPicture(const std::u16string& preview_path)
{
    browser_.SetTargetFolder(preview_path);
    browser_.SetDataKind(nct_data_kind);
    const std::u16string picture_path = preview_path + browser_.GetPreviewFileTitle() + u".PNG";
    panel2D_.Show(false);
    Rect area = window_.Fields().ControlClientRect(RES_PICTURE);
    area.right = pane_extent;
    area.bottom = pane_extent;
    window_.Fields().MoveControl(RES_PICTURE, window_.Fields().MapToDialog(RES_PICTURE, area));
    window_.Fields().ShowControl(RES_PICTURE, true);
    picture_.SetImagePath(picture_path);
}

} // namespace partkeep
