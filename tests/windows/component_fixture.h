// The library as hosts and tools meet it: loaded, with its factory and an object. Nothing of the component is linked
// into the tests.
#pragma once

#include "tests/windows/stand_in.h"
#include "windows/com_ptr.h"

#include "partkeep_read.h"

#include <gtest/gtest.h>

#include <objbase.h>

namespace partkeep {

using HostInterface = ::IPartkeepReadImpl;

inline constexpr CLSID class_id{0xE4962F8D, 0x71BB, 0x4071, {0xB3, 0x75, 0x4F, 0x26, 0x31, 0xDF, 0x3D, 0xDB}};
inline constexpr IID interface_id{0xF5777EAD, 0xE617, 0x4689, {0xA2, 0x0B, 0xC0, 0x08, 0xB5, 0x94, 0x45, 0x72}};

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

} // namespace partkeep
