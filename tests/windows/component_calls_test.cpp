// The object through every kind of call.

#include "tests/windows/component_fixture.h"

#include <oleauto.h>

#include <algorithm>
#include <future>
#include <thread>

namespace partkeep {
namespace {

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
    EXPECT_TRUE(std::ranges::all_of(kept.values, [](auto& value) { return value.vt == VT_I4 && value.lVal == 9; }))
        << "there is no record";
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

} // namespace
} // namespace partkeep
