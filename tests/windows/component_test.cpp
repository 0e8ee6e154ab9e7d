// The library as hosts and tools meet it: entry points, registration, the object through every kind of call, the
// exported functions. Nothing of the component is linked into this program.

#include "platform/windows/com_ptr.h"
#include "tests/support/temporary_folder.h"
#include "tests/windows/dialog_driver.h"
#include "tests/windows/loaded_function.h"
#include "tests/windows/stand_in.h"

#include "partkeep_read.h"

#include <gtest/gtest.h>

#include <ole2.h>
#include <oleauto.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>

namespace partkeep {
namespace {

using HostInterface = ::IPartkeepReadImpl;
using EntryPoint = HRESULT(STDAPICALLTYPE*)();
using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);

constexpr CLSID class_id{0xE4962F8D, 0x71BB, 0x4071, {0xB3, 0x75, 0x4F, 0x26, 0x31, 0xDF, 0x3D, 0xDB}};
constexpr IID interface_id{0xF5777EAD, 0xE617, 0x4689, {0xA2, 0x0B, 0xC0, 0x08, 0xB5, 0x94, 0x45, 0x72}};
constexpr wchar_t class_id_text[] = L"{E4962F8D-71BB-4071-B375-4F2631DF3DDB}";
constexpr wchar_t library_id_text[] = L"{74326502-FEC5-428A-B215-C365ABB0259E}";

// A text of the component model that goes with its scope.
struct Text {
    BSTR value = nullptr;
    Text() = default;
    explicit Text(const wchar_t* text) : value(SysAllocString(text)) {}
    explicit Text(const std::wstring& text) : value(SysAllocStringLen(text.data(), static_cast<UINT>(text.size()))) {}
    ~Text() { SysFreeString(value); }
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;
    operator BSTR() const { return value; }
    BSTR* operator&() { return &value; }
    [[nodiscard]] std::wstring Get() const
    {
        return value != nullptr ? std::wstring(value, SysStringLen(value)) : L"(null)";
    }
};

// Every key under one, with its values, as lines.
void ReadKeys(HKEY root, const std::wstring& path, std::set<std::wstring>& lines)
{
    HKEY key = nullptr;
    if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
        return;
    }
    lines.insert(path);
    std::array<wchar_t, 512> name{};
    std::array<wchar_t, 2048> data{};
    for (DWORD index = 0;; ++index) {
        auto name_length = static_cast<DWORD>(name.size());
        auto bytes = static_cast<DWORD>(sizeof data);
        if (RegEnumValueW(key, index, name.data(), &name_length, nullptr, nullptr, reinterpret_cast<BYTE*>(data.data()),
                          &bytes) != ERROR_SUCCESS) {
            break;
        }
        lines.insert(path + L"|" + name.data() + L"=" + std::wstring(data.data(), bytes / sizeof(wchar_t)).c_str());
    }
    for (DWORD index = 0; RegEnumKeyW(key, index, name.data(), static_cast<DWORD>(name.size())) == ERROR_SUCCESS;
         ++index) {
        ReadKeys(root, path + L"\\" + name.data(), lines);
    }
    RegCloseKey(key);
}

// What registration can touch: the whole list of classes would take minutes.
std::set<std::wstring> Snapshot()
{
    std::set<std::wstring> lines;
    for (const std::wstring& path :
         {std::wstring(L"ORVICPartkeepRead.PartkeepReadImpl"), std::wstring(L"ORVICPartkeepRead.PartkeepReadImpl.1"),
          std::wstring(L"CLSID\\") + class_id_text, std::wstring(L"TypeLib\\") + library_id_text,
          std::wstring(L"Interface\\{F5777EAD-E617-4689-A20B-C008B5944572}")}) {
        ReadKeys(HKEY_CLASSES_ROOT, path, lines);
    }
    return lines;
}

class Component : public testing::Test {
protected:
    Component() { OleInitialize(nullptr); }
    ~Component() override
    {
        Entry("DllUnregisterServer");
        EXPECT_EQ(Entry("DllCanUnloadNow"), S_OK);
        FreeLibrary(library);
        OleUninitialize();
    }

    HRESULT Entry(const char* name) const { return LoadedFunction<EntryPoint>(library, name)(); }

    [[nodiscard]] ComPtr<HostInterface> Make() const
    {
        ComPtr<IClassFactory> factory;
        ComPtr<HostInterface> object;
        LoadedFunction<GetClassObject>(library, "DllGetClassObject")(class_id, IID_IClassFactory, factory.PutVoid());
        EXPECT_EQ(factory->CreateInstance(nullptr, interface_id, object.PutVoid()), S_OK);
        return object;
    }

    CTemporaryFolder folder;
    HMODULE library = LoadLibraryA(COMPONENT_FILE);
};

TEST_F(Component, RegistersTheSameTwiceAndLeavesNothingBehind)
{
    EXPECT_EQ(Entry("DllUnregisterServer"), S_OK) << "with nothing there";
    const std::set<std::wstring> before = Snapshot();
    ASSERT_EQ(Entry("DllRegisterServer"), S_OK);
    const std::set<std::wstring> once = Snapshot();
    std::array<wchar_t, MAX_PATH> path{};
    GetModuleFileNameW(library, path.data(), MAX_PATH);
    const std::wstring key = std::wstring(L"CLSID\\") + class_id_text;
    for (const std::wstring& line :
         {key + L"|=PartkeepReadImpl Class", key + L"\\ProgID|=ORVICPartkeepRead.PartkeepReadImpl.1",
          key + L"\\VersionIndependentProgID|=ORVICPartkeepRead.PartkeepReadImpl",
          key + L"\\InprocServer32|=" + path.data(), key + L"\\InprocServer32|ThreadingModel=both",
          std::wstring(L"ORVICPartkeepRead.PartkeepReadImpl\\CLSID|=") + class_id_text,
          std::wstring(L"ORVICPartkeepRead.PartkeepReadImpl.1\\CLSID|=") + class_id_text,
          std::wstring(L"TypeLib\\") + library_id_text + L"\\1.0|=ORVICPartkeepRead 1.0 Type Library"}) {
        EXPECT_TRUE(once.contains(line)) << std::string(line.begin(), line.end());
    }
    EXPECT_FALSE(once.contains(key + L"\\TypeLib"));
    EXPECT_FALSE(once.contains(L"ORVICPartkeepRead.PartkeepReadImpl\\CurVer"));
    RegSetKeyValueW(HKEY_CLASSES_ROOT, (key + L"\\Stale").c_str(), nullptr, REG_SZ, L"x", 4);
    ASSERT_EQ(Entry("DllRegisterServer"), S_OK);
    EXPECT_EQ(Snapshot(), once) << "what lay under the class goes first";
    EXPECT_EQ(Entry("DllUnregisterServer"), S_OK);
    EXPECT_EQ(Snapshot(), before);
    std::set<std::wstring> classes;
    HKEY all = nullptr;
    EXPECT_EQ(RegOpenKeyExW(HKEY_CLASSES_ROOT, L"CLSID", 0, KEY_READ, &all), ERROR_SUCCESS) << "stays";
    RegCloseKey(all);
}

TEST_F(Component, APathWithQuotesIsRegisteredAsItIs)
{
    const auto place = folder.Path("it's 'here'");
    std::filesystem::create_directories(place);
    std::filesystem::copy_file(COMPONENT_FILE, place / "ORVICPartkeepRead.DLL");
    HMODULE copy = LoadLibraryW((place / "ORVICPartkeepRead.DLL").c_str());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(LoadedFunction<EntryPoint>(copy, "DllRegisterServer")(), S_OK);
    std::array<wchar_t, MAX_PATH> path{};
    GetModuleFileNameW(copy, path.data(), MAX_PATH);
    EXPECT_TRUE(Snapshot().contains(std::wstring(L"CLSID\\") + class_id_text + L"\\InprocServer32|=" + path.data()));
    EXPECT_EQ(LoadedFunction<EntryPoint>(copy, "DllUnregisterServer")(), S_OK);
    FreeLibrary(copy);
}

TEST_F(Component, FactoryIsKeptAndHoldsNothing)
{
    const auto get = LoadedFunction<GetClassObject>(library, "DllGetClassObject");
    ComPtr<IClassFactory> first;
    ComPtr<IClassFactory> second;
    void* none = this;
    EXPECT_EQ(get(IID_IUnknown, IID_IClassFactory, &none), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(get(class_id, IID_IClassFactory, nullptr), E_POINTER);
    ASSERT_EQ(get(class_id, IID_IClassFactory, first.PutVoid()), S_OK);
    ASSERT_EQ(get(class_id, IID_IClassFactory, second.PutVoid()), S_OK);
    EXPECT_EQ(first.Get(), second.Get());
    EXPECT_EQ(Entry("DllCanUnloadNow"), S_OK);
    first->LockServer(TRUE);
    EXPECT_EQ(Entry("DllCanUnloadNow"), S_FALSE);
    first->LockServer(FALSE);
    for (int round = 0; round < 1000; ++round) {
        const ComPtr<HostInterface> object = Make();
        EXPECT_EQ(Entry("DllCanUnloadNow"), S_FALSE);
    }
    EXPECT_EQ(Entry("DllCanUnloadNow"), S_OK);
}

// An outer object of the simplest kind.
class Outer final : public IUnknown {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** result) override
    {
        if (id == IID_IUnknown) {
            *result = this;
            AddRef();
            return S_OK;
        }
        return inner->QueryInterface(id, result);
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }

    ULONG references = 1;
    ComPtr<IUnknown> inner;
};

TEST_F(Component, AnswersForItsInterfacesAndAsPartOfAnother)
{
    const ComPtr<HostInterface> object = Make();
    for (const IID& id : {IID_IUnknown, IID_IDispatch, interface_id, IID_ISupportErrorInfo}) {
        ComPtr<IUnknown> asked;
        EXPECT_EQ(object->QueryInterface(id, asked.PutVoid()), S_OK);
    }
    ComPtr<IUnknown> none;
    EXPECT_EQ(object->QueryInterface(IID_IOleObject, none.PutVoid()), E_NOINTERFACE);
    ComPtr<ISupportErrorInfo> errors;
    object->QueryInterface(IID_ISupportErrorInfo, errors.PutVoid());
    EXPECT_EQ(errors->InterfaceSupportsErrorInfo(interface_id), S_OK);
    EXPECT_EQ(errors->InterfaceSupportsErrorInfo(IID_IDispatch), S_FALSE);

    Outer outer;
    ComPtr<IClassFactory> factory;
    LoadedFunction<GetClassObject>(library, "DllGetClassObject")(class_id, IID_IClassFactory, factory.PutVoid());
    EXPECT_EQ(factory->CreateInstance(&outer, interface_id, none.PutVoid()), CLASS_E_NOAGGREGATION);
    ASSERT_EQ(factory->CreateInstance(&outer, IID_IUnknown, outer.inner.PutVoid()), S_OK);
    {
        ComPtr<HostInterface> part;
        ASSERT_EQ(outer.QueryInterface(interface_id, part.PutVoid()), S_OK);
        ComPtr<IUnknown> whole;
        part->QueryInterface(IID_IUnknown, whole.PutVoid());
        EXPECT_EQ(whole.Get(), &outer);
    }
    EXPECT_EQ(outer.references, 1U);
}

// The result of a late-bound call with arguments in the order of the declaration.
HRESULT Call(IDispatch& object, const wchar_t* name, std::vector<VARIANT> arguments)
{
    DISPID id = 0;
    auto* writable = const_cast<wchar_t*>(name);
    EXPECT_EQ(object.GetIDsOfNames(IID_NULL, &writable, 1, 0, &id), S_OK) << std::string(name, name + wcslen(name));
    std::vector<VARIANT> reversed(arguments.rbegin(), arguments.rend());
    DISPPARAMS parameters{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
    return object.Invoke(id, IID_NULL, 0, DISPATCH_METHOD, &parameters, nullptr, nullptr, nullptr);
}

VARIANT Reference(VARTYPE type, void* place)
{
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = static_cast<VARTYPE>(VT_BYREF | type);
    variant.byref = place;
    return variant;
}

VARIANT Number(LONG value)
{
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_I4;
    variant.lVal = value;
    return variant;
}

TEST_F(Component, ScriptsReadOutputsAndKeepWhatIsNotWritten)
{
    const ComPtr<HostInterface> object = Make();
    VARIANT count = Number(77);
    VARIANT nested = Reference(VT_VARIANT, &count);
    EXPECT_EQ(Call(*object.Get(), L"NumberOfPartsSelected", {Reference(VT_VARIANT, &nested)}), S_OK);
    EXPECT_EQ(count.vt, VT_I4);
    EXPECT_EQ(count.lVal, 0);
    VARIANT kept = Number(5);
    Call(*object.Get(), L"GetFilePath", {Reference(VT_VARIANT, &kept)});
    EXPECT_EQ(kept.vt, VT_I4) << "there is no record: the output stays as it was";
    EXPECT_EQ(kept.lVal, 5);
    std::array<VARIANT, 12> outputs{};
    std::vector<VARIANT> arguments{Number(-1)};
    for (VARIANT& output : outputs) {
        output = Number(9);
        arguments.push_back(Reference(VT_VARIANT, &output));
    }
    EXPECT_EQ(Call(*object.Get(), L"GetPartInfo", arguments), S_OK);
    EXPECT_EQ(outputs[0].vt, VT_BSTR);
    EXPECT_EQ(SysStringLen(outputs[0].bstrVal), 0U);
    EXPECT_EQ(outputs[9].vt, VT_I4);
    EXPECT_EQ(outputs[10].vt, VT_R8);
    for (VARIANT& output : outputs) {
        VariantClear(&output);
    }
}

TEST_F(Component, HostileArgumentsGetAResult)
{
    const ComPtr<HostInterface> object = Make();
    EXPECT_EQ(object->GetFilePath(nullptr), S_FALSE);
    EXPECT_EQ(object->NumberOfPartsSelected(nullptr), S_OK);
    EXPECT_EQ(object->GetPartInfo(0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                  nullptr, nullptr, nullptr),
              S_OK);
    EXPECT_EQ(object->SetWorkingFolder(nullptr), S_OK);
    const Text huge(std::wstring(1 << 20, L'x'));
    const Text with_nul(std::wstring(L"a\0b", 3));
    EXPECT_EQ(object->SetWorkingFolder(huge), S_OK);
    EXPECT_EQ(object->SetWorkingFolder(with_nul), S_OK);
    EXPECT_EQ(object->SetWorkingFolder(nullptr), S_OK);
    EXPECT_EQ(object->Invoke(5, IID_NULL, 0, DISPATCH_METHOD, nullptr, nullptr, nullptr, nullptr), E_INVALIDARG);
    DISPPARAMS hollow{nullptr, nullptr, 1, 0};
    EXPECT_EQ(object->Invoke(5, IID_NULL, 0, DISPATCH_METHOD, &hollow, nullptr, nullptr, nullptr), E_INVALIDARG);
    EXPECT_EQ(object->Invoke(99, IID_NULL, 0, DISPATCH_METHOD, &hollow, nullptr, nullptr, nullptr), E_INVALIDARG);
    EXPECT_EQ(object->GetIDsOfNames(IID_NULL, nullptr, 1, 0, nullptr), E_INVALIDARG);
    EXPECT_EQ(object->GetTypeInfo(0, 0, nullptr), E_POINTER);
    VARIANT self = Reference(VT_VARIANT, nullptr);
    self.byref = &self;
    VARIANT number = Number(1);
    double real = 0;
    const struct {
        const char* label;
        const wchar_t* name;
        std::vector<VARIANT> arguments;
        HRESULT expected;
    } rows[] = {
        {"too few", L"NumberOfPartsSelected", {}, DISP_E_BADPARAMCOUNT},
        {"too many", L"InvokePartkeep", {number}, DISP_E_BADPARAMCOUNT},
        {"null variant", L"NumberOfPartsSelected", {Reference(VT_VARIANT, nullptr)}, DISP_E_TYPEMISMATCH},
        {"endless variant", L"NumberOfPartsSelected", {Reference(VT_VARIANT, &self)}, DISP_E_TYPEMISMATCH},
        {"null input", L"SetLanguageID", {Reference(VT_I4, nullptr)}, DISP_E_TYPEMISMATCH},
        {"wrong place", L"NumberOfPartsSelected", {Reference(VT_R8, &real)}, DISP_E_TYPEMISMATCH},
        {"value for a place", L"NumberOfPartsSelected", {number}, DISP_E_TYPEMISMATCH},
        {"null place", L"NumberOfPartsSelected", {Reference(VT_I4, nullptr)}, S_OK},
        {"number as text", L"SetWorkingFolder", {number}, S_OK},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Call(*object.Get(), row.name, row.arguments), row.expected) << row.label;
    }
}

TEST_F(Component, WorksFromAnotherApartmentAndNextToASecondObject)
{
    ASSERT_EQ(Entry("DllRegisterServer"), S_OK);
    HANDLE ready = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    HANDLE done = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    IStream* parcel = nullptr;
    std::thread other([&] {
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        {
            ComPtr<HostInterface> object;
            EXPECT_EQ(CoCreateInstance(class_id, nullptr, CLSCTX_INPROC_SERVER, interface_id, object.PutVoid()), S_OK);
            EXPECT_EQ(CoMarshalInterThreadInterfaceInStream(interface_id, object.Get(), &parcel), S_OK);
            SetEvent(ready);
            WaitForSingleObject(done, INFINITE);
        }
        CoUninitialize();
    });
    WaitForSingleObject(ready, INFINITE);
    {
        ComPtr<HostInterface> from_there;
        ComPtr<HostInterface> own;
        EXPECT_EQ(CoGetInterfaceAndReleaseStream(parcel, interface_id, from_there.PutVoid()), S_OK);
        EXPECT_EQ(CoCreateInstance(class_id, nullptr, CLSCTX_INPROC_SERVER, interface_id, own.PutVoid()), S_OK);
        for (HostInterface* object : {from_there.Get(), own.Get()}) {
            LONG count = -1;
            Text name;
            LONG type = -1;
            double thickness = -1;
            Text rest[10];
            EXPECT_EQ(object->NumberOfPartsSelected(&count), S_OK);
            EXPECT_EQ(count, 0);
            EXPECT_EQ(object->GetPartInfo(3, &rest[0], &rest[1], &rest[2], &rest[3], &rest[4], &name, &rest[5],
                                          &rest[6], &rest[7], &type, &thickness, &rest[8]),
                      S_OK);
            EXPECT_EQ(name.Get(), L"");
            EXPECT_EQ(thickness, 0.0);
        }
    }
    SetEvent(done);
    other.join();
    CloseHandle(ready);
    CloseHandle(done);
}

TEST_F(Component, BitmapFunctionsAreExportedByName)
{
    struct {
        BITMAPFILEHEADER file{};
        BITMAPINFOHEADER header{sizeof(BITMAPINFOHEADER), 2, 2, 1, 8, BI_RGB, 8, 0, 0, 2, 0};
        RGBQUAD colors[2]{{1, 2, 3, 0}, {4, 5, 6, 0}};
        BYTE pixels[8]{0, 1, 0, 0, 1, 0, 0, 0};
    } __attribute__((packed)) bitmap;
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, sizeof bitmap);
    std::memcpy(GlobalLock(block), &bitmap, sizeof bitmap);
    GlobalUnlock(block);
    const void* header = &bitmap.header;
    EXPECT_EQ(LoadedFunction<DWORD(WINAPI*)(const void*)>(library, "DIBWidth")(header), 2U);
    EXPECT_EQ(LoadedFunction<DWORD(WINAPI*)(const void*)>(library, "DIBHeight")(header), 2U);
    EXPECT_EQ(LoadedFunction<WORD(WINAPI*)(const void*)>(library, "DIBNumColors")(header), 2);
    EXPECT_EQ(LoadedFunction<WORD(WINAPI*)(const void*)>(library, "PaletteSize")(header), 8);
    EXPECT_EQ(LoadedFunction<const void*(WINAPI*)(const void*)>(library, "FindDIBBits")(header), bitmap.pixels);

    struct {
        const void* functions = nullptr;
        HPALETTE handle = nullptr;
    } palette; // as the host's window library lays it out
    const auto create = LoadedFunction<INT(WINAPI*)(HGLOBAL, void*)>(library, "CreateDIBPalette");
    EXPECT_EQ(create(block, nullptr), 0);
    EXPECT_NE(create(block, &palette), 0);
    PALETTEENTRY entry{};
    EXPECT_EQ(GetPaletteEntries(palette.handle, 1, 1, &entry), 1U);
    EXPECT_EQ(entry.peRed, 6);
    using Paint = INT(WINAPI*)(HDC, RECT*, HGLOBAL, RECT*, void*);
    const auto paint = LoadedFunction<Paint>(library, "PaintDIB");
    HDC screen = GetDC(nullptr);
    HDC memory = CreateCompatibleDC(screen);
    HBITMAP target = CreateCompatibleBitmap(screen, 4, 4);
    HGDIOBJ before = SelectObject(memory, target);
    RECT all{0, 0, 4, 4};
    RECT whole{0, 0, 2, 2};
    EXPECT_EQ(paint(memory, &all, nullptr, &whole, nullptr), 0);
    EXPECT_EQ(paint(memory, nullptr, block, &whole, nullptr), 0);
    EXPECT_NE(paint(memory, &all, block, &whole, &palette), 0);
    EXPECT_EQ(GetPixel(memory, 0, 0), RGB(6, 5, 4));
    SelectObject(memory, before);
    DeleteObject(target);
    DeleteDC(memory);
    ReleaseDC(nullptr, screen);
    DeleteObject(palette.handle);
    GlobalFree(block);
}

} // namespace
} // namespace partkeep
