// The library as hosts and tools meet it: entry points, resources, life, the exported functions.

#include "tests/support/dib_sample.h"
#include "tests/windows/component_fixture.h"

#include <algorithm>
#include <malloc.h>

namespace partkeep {
namespace {

BOOL CALLBACK NoteLanguage(HMODULE, LPCWSTR, LPCWSTR, WORD language, LONG_PTR list)
{
    reinterpret_cast<std::vector<WORD>*>(list)->push_back(language);
    return TRUE;
}

TEST_F(Component, HoldsItsResourcesByNumberAndLanguage)
{
    const auto* initial_state = MAKEINTRESOURCEW(240); // of a dialog's controls
    const auto* toolbar = MAKEINTRESOURCEW(241);
    using Numbers = std::vector<WORD>;
    const std::tuple<const wchar_t*, Numbers, Numbers> rows[]{{L"REGISTRY", {103}, {1041}},
                                                              {L"TYPELIB", {1}, {1033}},
                                                              {RT_VERSION, {1}, {1033}},
                                                              {RT_DIALOG, {101, 202, 250}, {1033}},
                                                              {initial_state, {101}, {1033}},
                                                              {toolbar, {212}, {1033, 1041, 2052}},
                                                              {RT_BITMAP, {212}, {1033, 1041, 2052}},
                                                              {RT_STRING, {7, 8, 9, 2049}, {1033, 1041, 2052}}};
    for (const auto& [type, numbers, languages] : rows) {
        for (const WORD number : numbers) {
            Numbers found;
            EnumResourceLanguagesW(library, type, MAKEINTRESOURCEW(number), NoteLanguage,
                                   reinterpret_cast<LONG_PTR>(&found));
            std::ranges::sort(found);
            EXPECT_EQ(found, languages) << number;
        }
    }
    const auto words = [this](const wchar_t* type, WORD number, std::size_t from, std::size_t count) {
        HRSRC found = FindResourceW(library, MAKEINTRESOURCEW(number), type);
        const auto* first = static_cast<const WORD*>(LockResource(LoadResource(library, found))) + from;
        return Numbers(first, first + std::min<std::size_t>(count, SizeofResource(library, found) / 2));
    };
    EXPECT_EQ(words(toolbar, 212, 0, 99), (Numbers{1, 16, 15, 4, 32773, 32774, 32775, 32776}));
    // Behind length, key and signature: version of the structure, of the file, of the product.
    EXPECT_EQ(words(RT_VERSION, 1, 22, 10), (Numbers{0, 1, 0, 1, 10, 2, 0, 1, 1, 0}));
}

TEST_F(Component, FactoryIsKeptAndHoldsTheLibraryWhileItIsHeld)
{
    CComPtr<IClassFactory> second;
    void* none = this;
    EXPECT_EQ(ClassObject(IID_IUnknown, &none), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(ClassObject(class_id, nullptr), E_POINTER);
    ASSERT_EQ(ClassObject(class_id, second.PutVoid()), S_OK);
    EXPECT_EQ(second.Get(), factory.Get());
    for (int round = 0; round < 1000; ++round) {
        object = Make();
    }
    object.Reset();
    second.Reset();
    EXPECT_EQ(Entry("DllCanUnloadNow"), S_FALSE);
    factory->LockServer(TRUE);
    IClassFactory* unheld = factory.Get();
    factory.Reset();
    EXPECT_EQ(Entry("DllCanUnloadNow"), S_FALSE);
    unheld->LockServer(FALSE);
    EXPECT_EQ(Entry("DllCanUnloadNow"), S_OK);
}

// The bytes in use of the heap that the run-times of this program and of the library share.
std::size_t BytesInUse()
{
    std::size_t bytes = 0;
    _HEAPINFO entry{};
    while (_heapwalk(&entry) == _HEAPOK) {
        bytes += entry._useflag == _USEDENTRY ? entry._size : 0;
    }
    return bytes;
}

TEST_F(Component, GivesTheReserveForExceptionsBackWhenItIsUnloaded)
{
    object.Reset();
    factory.Reset();
    std::size_t first = 0;
    constexpr std::size_t loads = 50;
    for (std::size_t load = 0; load <= loads; ++load) {
        FreeLibrary(library);
        ASSERT_EQ(GetModuleHandleA(COMPONENT_FILE), nullptr);
        first = load == 1 ? BytesInUse() : first;
        library = LoadLibraryA(COMPONENT_FILE);
        ASSERT_EQ(ClassObject(class_id, factory.PutVoid()), S_OK);
        Make()->SetLanguageID(1);
        factory.Reset();
    }
    FreeLibrary(library);
    // What the run-time keeps for a thread goes with the thread, 800 bytes a load.
    EXPECT_LT(BytesInUse(), first + loads * 1500);
    library = LoadLibraryA(COMPONENT_FILE);
}

TEST_F(Component, BitmapFunctionsAreExportedByName)
{
    const SampleFile sample = MakeSampleFile({.bits = 8, .colors_used = 2});
    const TestBlock block(sample.bytes);
    const void* header = sample.bytes.data() + dib_file_header_bytes;
    EXPECT_EQ(Function<DWORD WINAPI(const void*)>("DIBWidth")(header), 11U);
    EXPECT_EQ(Function<DWORD WINAPI(const void*)>("DIBHeight")(header), 7U);
    EXPECT_EQ(Function<WORD WINAPI(const void*)>("DIBNumColors")(header), 2);
    EXPECT_EQ(Function<WORD WINAPI(const void*)>("PaletteSize")(header), 8);
    EXPECT_EQ(Function<const void * WINAPI(const void*)>("FindDIBBits")(header),
              sample.bytes.data() + sample.pixel_offset);

    struct {
        const void* functions = nullptr;
        HPALETTE handle = nullptr;
    } palette; // as the host's window library lays it out
    auto* create = Function<INT WINAPI(HGLOBAL, void*)>("CreateDIBPalette");
    EXPECT_EQ(create(block.handle, nullptr), 0);
    EXPECT_NE(create(block.handle, &palette), 0);
    EXPECT_EQ(GetPaletteEntries(palette.handle, 0, 0, nullptr), 2U);
    auto* paint = Function<INT WINAPI(HDC, RECT*, HGLOBAL, RECT*, void*)>("PaintDIB");
    HDC memory = CreateCompatibleDC(nullptr); // with a bitmap of one pixel
    RECT all{0, 0, 11, 7};
    EXPECT_EQ(paint(memory, &all, nullptr, &all, nullptr), 0);
    EXPECT_EQ(paint(memory, nullptr, block.handle, &all, nullptr), 0);
    EXPECT_EQ(paint(memory, &all, block.handle, &all, &palette), 7);
    DeleteDC(memory);
    DeleteObject(palette.handle);
}

} // namespace
} // namespace partkeep
