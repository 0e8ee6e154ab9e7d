// A host in C++: picks parts with the selection dialog and prints them, one to a line, fields between tabs.
//
//   pick_parts WORKFOLDER [LANGUAGE]
//
// Early-bound by partkeep_read.h. The class is looked up by its program id; without any registration that works
// where the two manifests lie beside the program and the component.

#include <windows.h>

#include <oleauto.h>

#include "partkeep_read.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

constexpr IID host_interface_id{0xF5777EAD, 0xE617, 0x4689, {0xA2, 0x0B, 0xC0, 0x08, 0xB5, 0x94, 0x45, 0x72}};

// A text that the component hands out, freed with its scope.
class Text {
public:
    Text() = default;
    explicit Text(const std::wstring& text) : text_(SysAllocString(text.c_str())) {}
    ~Text() { SysFreeString(text_); }
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;

    [[nodiscard]] BSTR Get() const { return text_; }
    [[nodiscard]] BSTR* Put() { return &text_; }
    [[nodiscard]] std::string Utf8() const
    {
        const int length = static_cast<int>(SysStringLen(text_));
        std::string narrow(static_cast<std::size_t>(length) * 3, '\0');
        const int used = WideCharToMultiByte(CP_UTF8, 0, text_, length, narrow.data(), static_cast<int>(narrow.size()),
                                             nullptr, nullptr);
        narrow.resize(static_cast<std::size_t>(used));
        return narrow;
    }

private:
    BSTR text_ = nullptr;
};

IPartkeepReadImpl* CreateHostObject()
{
    CLSID class_id;
    void* object = nullptr;
    if (FAILED(CLSIDFromProgID(L"ORVICPartkeepRead.PartkeepReadImpl", &class_id)) ||
        FAILED(CoCreateInstance(class_id, nullptr, CLSCTX_INPROC_SERVER, host_interface_id, &object))) {
        return nullptr;
    }
    return static_cast<IPartkeepReadImpl*>(object);
}

void PrintPart(IPartkeepReadImpl& host, LONG index)
{
    Text server, folder, path, sy, nc, name, comment, material, machine, quantity;
    LONG machine_type = 0;
    double thickness = 0;
    host.GetPartInfo(index, server.Put(), folder.Put(), path.Put(), sy.Put(), nc.Put(), name.Put(), comment.Put(),
                     material.Put(), machine.Put(), &machine_type, &thickness, quantity.Put());
    std::printf("%s\t%s\t%s\t%g\t%s\n", name.Utf8().c_str(), quantity.Utf8().c_str(), material.Utf8().c_str(),
                thickness, path.Utf8().c_str());
}

int PickParts(IPartkeepReadImpl& host, const std::wstring& folder, LONG language)
{
    const Text working_folder(folder + L"\\");
    host.SetWorkingFolder(working_folder.Get());
    host.SetLanguageID(language);
    host.InvokePartkeepMultiSelection(1);
    LONG count = 0;
    host.NumberOfPartsSelected(&count);
    std::printf("%ld parts\n", count);
    for (LONG index = 0; index < count; ++index) {
        PrintPart(host, index);
    }
    return 0;
}

} // namespace

int wmain(int count, wchar_t** arguments)
{
    if (count < 2) {
        std::puts("usage: pick_parts WORKFOLDER [LANGUAGE]");
        return 2;
    }
    // The dialog hosts controls, which live in this kind of apartment only.
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    IPartkeepReadImpl* host = CreateHostObject();
    if (host == nullptr) {
        std::puts("the component is not to be found");
        return 1;
    }
    const int result = PickParts(*host, arguments[1], count > 2 ? std::wcstol(arguments[2], nullptr, 10) : 1);
    host->Release();
    CoUninitialize();
    return result;
}
