// The library as hosts and tools meet it: entry points, registration, resources, the object through every kind of
// call, the exported functions. Nothing of the component is linked into this program.

#include "tests/support/dib_sample.h"
#include "tests/windows/stand_in.h"
#include "windows/com_ptr.h"

#include "partkeep_read.h"

#include <gtest/gtest.h>

#include <ole2.h>
#include <oleauto.h>

#include <algorithm>
#include <future>
#include <malloc.h>

namespace partkeep {
namespace {

using HostInterface = ::IPartkeepReadImpl;

constexpr CLSID class_id{0xE4962F8D, 0x71BB, 0x4071, {0xB3, 0x75, 0x4F, 0x26, 0x31, 0xDF, 0x3D, 0xDB}};
constexpr IID interface_id{0xF5777EAD, 0xE617, 0x4689, {0xA2, 0x0B, 0xC0, 0x08, 0xB5, 0x94, 0x45, 0x72}};

VARIANT Value(int type, LONGLONG value = 0)
{
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = static_cast<VARTYPE>(type);
    variant.llVal = value;
    return variant;
}

VARIANT Reference(int type, void* place)
{
    return Value(VT_BYREF | type, reinterpret_cast<LONGLONG>(place));
}

class Component : public testing::Test {
protected:
    Component()
    {
        EXPECT_EQ(ClassObject(class_id, factory.PutVoid()), S_OK);
        object = Make();
    }
    ~Component() override
    {
        EXPECT_EQ(Entry("DllUnregisterServer"), S_OK) << "even with nothing there";
        EXPECT_EQ(Entry("DllCanUnloadNow"), object || factory ? S_FALSE : S_OK);
        object.Reset();
        EXPECT_EQ(Entry("DllCanUnloadNow"), factory ? S_FALSE : S_OK) << "a factory that is held counts";
        factory.Reset();
        EXPECT_EQ(Entry("DllCanUnloadNow"), S_OK) << "one that is only kept does not";
        FreeLibrary(library);
    }

    template <class Signature>
    [[nodiscard]] Signature* Function(const char* name) const
    {
        return reinterpret_cast<Signature*>(reinterpret_cast<void*>(GetProcAddress(library, name)));
    }
    HRESULT Entry(const char* name) const { return Function<HRESULT STDAPICALLTYPE()>(name)(); }
    HRESULT ClassObject(const CLSID& id, void** result) const
    {
        using Signature = HRESULT STDAPICALLTYPE(REFCLSID, REFIID, void**);
        return Function<Signature>("DllGetClassObject")(id, IID_IClassFactory, result);
    }
    [[nodiscard]] CComPtr<HostInterface> Make() const
    {
        CComPtr<HostInterface> made;
        EXPECT_EQ(factory->CreateInstance(nullptr, interface_id, made.PutVoid()), S_OK);
        return made;
    }

    StandIn stand_in;
    HMODULE library = LoadLibraryA(COMPONENT_FILE);
    CComPtr<IClassFactory> factory;
    CComPtr<HostInterface> object;
};

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

// An outer object of the simplest kind.
struct Outer final : IUnknown {
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** result) override
    {
        if (id != IID_IUnknown) {
            return inner->QueryInterface(id, result);
        }
        AddRef();
        *result = this;
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }

    ULONG references = 1;
    CComPtr<IUnknown> inner;
};

TEST_F(Component, AnswersForItsInterfacesAndAsPartOfAnother)
{
    CComPtr<IUnknown> asked;
    EXPECT_EQ(object->QueryInterface(IID_IUnknown, asked.PutVoid()), S_OK);
    EXPECT_EQ(object->QueryInterface(IID_IDispatch, asked.PutVoid()), S_OK);
    EXPECT_EQ(object->QueryInterface(IID_IOleObject, asked.PutVoid()), E_NOINTERFACE);
    CComPtr<ISupportErrorInfo> errors;
    ASSERT_EQ(object->QueryInterface(IID_ISupportErrorInfo, errors.PutVoid()), S_OK);
    EXPECT_EQ(errors->InterfaceSupportsErrorInfo(interface_id), S_OK);
    EXPECT_EQ(errors->InterfaceSupportsErrorInfo(IID_IDispatch), S_FALSE);

    Outer outer;
    EXPECT_EQ(factory->CreateInstance(&outer, interface_id, asked.PutVoid()), CLASS_E_NOAGGREGATION);
    ASSERT_EQ(factory->CreateInstance(&outer, IID_IUnknown, outer.inner.PutVoid()), S_OK);
    CComPtr<HostInterface> part;
    ASSERT_EQ(outer.QueryInterface(interface_id, part.PutVoid()), S_OK);
    part->QueryInterface(IID_IUnknown, asked.PutVoid());
    EXPECT_EQ(asked.Get(), &outer);
    part.Reset();
    asked.Reset();
    EXPECT_EQ(outer.references, 1U);
}

// A late-bound call with arguments in the order of the declaration, the first of them by name.
HRESULT Call(IDispatch& object, const wchar_t* name, const std::vector<VARIANT>& arguments,
             std::vector<DISPID> names = {}, UINT* bad_argument = nullptr)
{
    DISPID id = 0;
    auto* writable = const_cast<wchar_t*>(name);
    EXPECT_EQ(object.GetIDsOfNames(IID_NULL, &writable, 1, 0, &id), S_OK) << std::string(name, name + wcslen(name));
    std::vector<VARIANT> reversed(arguments.rbegin(), arguments.rend());
    DISPPARAMS parameters{reversed.data(), names.data(), static_cast<UINT>(reversed.size()),
                          static_cast<UINT>(names.size())};
    return object.Invoke(id, IID_NULL, 0, DISPATCH_METHOD, &parameters, nullptr, nullptr, bad_argument);
}

// A script's variables, passed behind other arguments.
struct Variables {
    explicit Variables(std::size_t count) : values(count, Value(VT_I4, 9)) {}
    [[nodiscard]] std::vector<VARIANT> Behind(std::vector<VARIANT> arguments)
    {
        for (VARIANT& value : values) {
            arguments.push_back(Reference(VT_VARIANT, &value));
        }
        return arguments;
    }
    [[nodiscard]] bool AreUntouched() const
    {
        return std::ranges::all_of(values, [](auto& value) { return value.vt == VT_I4 && value.lVal == 9; });
    }

    std::vector<VARIANT> values;
};

TEST_F(Component, ScriptsReadOutputsAndKeepWhatIsNotWritten)
{
    VARIANT count = Value(VT_I4, 77);
    VARIANT nested = Reference(VT_VARIANT, &count);
    EXPECT_EQ(Call(*object.Get(), L"NumberOfPartsSelected", {Reference(VT_VARIANT, &nested)}), S_OK);
    EXPECT_EQ(count.vt, VT_I4);
    EXPECT_EQ(count.lVal, 0);
    Variables kept(6);
    EXPECT_EQ(Call(*object.Get(), L"GetSelectedPartInfo", kept.Behind({})), S_OK);
    EXPECT_TRUE(kept.AreUntouched()) << "there is no record";
    Variables empty(12);
    EXPECT_EQ(Call(*object.Get(), L"GetPartInfo", empty.Behind({Value(VT_I4, -1)})), S_OK);
    for (std::size_t at = 0; at < empty.values.size(); ++at) {
        EXPECT_EQ(empty.values[at].vt, at == 9 ? VT_I4 : at == 10 ? VT_R8 : VT_BSTR) << at;
        EXPECT_EQ(at == 9 || at == 10 ? empty.values[at].llVal : SysStringLen(empty.values[at].bstrVal), 0U) << at;
    }
}

// A spy on the component model's memory that refuses one request.
struct Refusal final : IMallocSpy {
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** result) override
    {
        *result = this;
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    SIZE_T STDMETHODCALLTYPE PreAlloc(SIZE_T bytes) override { return left-- == 0 ? 0 : bytes; }
    void* STDMETHODCALLTYPE PostAlloc(void* block) override { return block; }
    void* STDMETHODCALLTYPE PreFree(void* block, WINBOOL) override { return block; }
    void STDMETHODCALLTYPE PostFree(WINBOOL) override {}
    SIZE_T STDMETHODCALLTYPE PreRealloc(void* block, SIZE_T bytes, void** real, WINBOOL) override
    {
        *real = block;
        return bytes;
    }
    void* STDMETHODCALLTYPE PostRealloc(void* block, WINBOOL) override { return block; }
    void* STDMETHODCALLTYPE PreGetSize(void* block, WINBOOL) override { return block; }
    SIZE_T STDMETHODCALLTYPE PostGetSize(SIZE_T bytes, WINBOOL) override { return bytes; }
    void* STDMETHODCALLTYPE PreDidAlloc(void* block, WINBOOL) override { return block; }
    int STDMETHODCALLTYPE PostDidAlloc(void*, WINBOOL, int answer) override { return answer; }
    void STDMETHODCALLTYPE PreHeapMinimize() override {}
    void STDMETHODCALLTYPE PostHeapMinimize() override {}

    int left = -1;
};

TEST_F(Component, OutputsComeAllOrNone)
{
    HMODULE automation = GetModuleHandleW(L"oleaut32.dll");
    reinterpret_cast<void(WINAPI*)()>(reinterpret_cast<void*>(GetProcAddress(automation, "SetOaNoCache")))();
    Refusal refusal;
    for (int refused = 0; refused <= 10; ++refused) {
        std::array<BSTR, 10> texts;
        texts.fill(SysAllocString(L"the host's"));
        const BSTR before = texts[0];
        LONG type = 5;
        double thickness = 5;
        CoRegisterMallocSpy(&refusal);
        refusal.left = refused;
        EXPECT_EQ(object->GetPartInfo(7, &texts[0], &texts[1], &texts[2], &texts[3], &texts[4], &texts[5], &texts[6],
                                      &texts[7], &texts[8], &type, &thickness, &texts[9]),
                  S_OK);
        CoRevokeMallocSpy();
        for (BSTR text : texts) {
            EXPECT_EQ(text == nullptr, refused < 10) << refused;
            EXPECT_EQ(SysStringLen(text), 0U);
            SysFreeString(text);
        }
        SysFreeString(before);
        EXPECT_EQ(type, 0);
        EXPECT_EQ(thickness, 0.0);
    }
}

TEST_F(Component, HostileArgumentsGetAResult)
{
    EXPECT_EQ(object->GetFilePath(nullptr), S_FALSE);
    EXPECT_EQ(object->GetPartInfo(0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                  nullptr, nullptr, nullptr),
              S_OK);
    const BSTR server = SysAllocString(L"SERVER1");
    for (BSTR text : {SysAllocStringLen(std::wstring(1 << 20, L'x').data(), 1 << 20), SysAllocStringLen(L"a\0b", 3),
                      static_cast<BSTR>(nullptr)}) {
        EXPECT_EQ(object->SetWorkingFolder(text), S_OK);
        EXPECT_EQ(object->InvokePartkeep(), S_FALSE) << "nothing is installed";
        EXPECT_EQ(object->ReadCADDataForTessara(server, text, text, text, nullptr, nullptr, nullptr, nullptr, nullptr,
                                                nullptr),
                  S_FALSE);
        SysFreeString(text);
    }
    SysFreeString(server);
    DISPPARAMS hollow{nullptr, nullptr, 1, 0};
    DISPPARAMS nameless{nullptr, nullptr, 0, 1};
    for (DISPPARAMS* parameters : {&hollow, &nameless, static_cast<DISPPARAMS*>(nullptr)}) {
        EXPECT_EQ(object->Invoke(5, IID_NULL, 0, DISPATCH_METHOD, parameters, nullptr, nullptr, nullptr), E_INVALIDARG);
    }
    DISPPARAMS none{};
    EXPECT_EQ(object->Invoke(99, IID_NULL, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr),
              DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(object->GetIDsOfNames(IID_NULL, nullptr, 1, 0, nullptr), E_INVALIDARG);
    EXPECT_EQ(object->GetTypeInfo(0, 0, nullptr), E_POINTER);
    VARIANT self = Reference(VT_VARIANT, &self);
    double real = 0;
    const std::tuple<const char*, const wchar_t*, std::vector<VARIANT>, std::vector<DISPID>, HRESULT> rows[]{
        {"too few", L"NumberOfPartsSelected", {}, {}, DISP_E_BADPARAMCOUNT},
        {"too many", L"InvokePartkeep", {Value(VT_I4, 1)}, {}, DISP_E_BADPARAMCOUNT},
        {"null variant", L"NumberOfPartsSelected", {Reference(VT_VARIANT, nullptr)}, {}, DISP_E_TYPEMISMATCH},
        {"endless variant", L"NumberOfPartsSelected", {Reference(VT_VARIANT, &self)}, {}, DISP_E_TYPEMISMATCH},
        {"null input", L"SetLanguageID", {Reference(VT_I4, nullptr)}, {}, DISP_E_TYPEMISMATCH},
        {"wrong place", L"NumberOfPartsSelected", {Reference(VT_R8, &real)}, {}, DISP_E_TYPEMISMATCH},
        {"value for a place", L"NumberOfPartsSelected", {Value(VT_I4, 1)}, {}, DISP_E_TYPEMISMATCH},
        {"null place", L"NumberOfPartsSelected", {Reference(VT_I4, nullptr)}, {}, S_OK},
        {"number as text", L"SetWorkingFolder", {Value(VT_I4, 1)}, {}, S_OK},
        {"no object as text", L"SetWorkingFolder", {Value(VT_DISPATCH)}, {}, DISP_E_BADVARTYPE},
        {"nothing as text", L"SetWorkingFolder", {Value(VT_NULL)}, {}, DISP_E_TYPEMISMATCH},
        {"by name", L"SetLanguageID", {Value(VT_I4, 1)}, {0}, S_OK},
        {"no such name", L"SetLanguageID", {Value(VT_I4, 1)}, {7}, DISP_E_PARAMNOTFOUND},
        {"more names than values", L"SetLanguageID", {Value(VT_I4, 1)}, {0, 0, 0}, E_INVALIDARG},
    };
    for (const auto& [label, name, arguments, names, expected] : rows) {
        EXPECT_EQ(Call(*object.Get(), name, arguments, names), expected) << label;
    }
    UINT bad = 99;
    Variables outputs(12);
    std::vector<VARIANT> second_wrong = outputs.Behind({Value(VT_I4, 0)});
    second_wrong[1] = Value(VT_I4, 1);
    EXPECT_EQ(Call(*object.Get(), L"GetPartInfo", second_wrong, {}, &bad), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(bad, 11U) << "the last one is number 0";
}

TEST_F(Component, WorksFromAnotherApartmentAndNextToASecondObject)
{
    ASSERT_EQ(Entry("DllRegisterServer"), S_OK);
    std::promise<IStream*> parcel;
    std::promise<void> done;
    std::thread other([&] {
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        CComPtr<HostInterface> own;
        EXPECT_EQ(CoCreateInstance(class_id, nullptr, CLSCTX_INPROC_SERVER, interface_id, own.PutVoid()), S_OK);
        IStream* stream = nullptr;
        EXPECT_EQ(CoMarshalInterThreadInterfaceInStream(interface_id, own.Get(), &stream), S_OK);
        parcel.set_value(stream);
        done.get_future().wait();
        own.Reset();
        CoUninitialize();
    });
    CComPtr<HostInterface> from_there;
    EXPECT_EQ(CoGetInterfaceAndReleaseStream(parcel.get_future().get(), interface_id, from_there.PutVoid()), S_OK);
    for (HostInterface* each : {from_there.Get(), object.Get()}) {
        LONG count = -1;
        EXPECT_EQ(each->NumberOfPartsSelected(&count), S_OK);
        EXPECT_EQ(count, 0);
        Variables outputs(12);
        EXPECT_EQ(Call(*each, L"GetPartInfo", outputs.Behind({Value(VT_I4, 3)})), S_OK);
        EXPECT_EQ(outputs.values[0].vt, VT_BSTR);
    }
    from_there.Reset();
    done.set_value();
    other.join();
}

TEST_F(Component, BitmapFunctionsAreExportedByName)
{
    const SampleFile sample = MakeSampleFile({"", 8, dib_info_header_bytes, 7, DibCompression::None, {}, 2});
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
