#include "host/component/host_object.h"

#include "host/component/component_module.h"
#include "host/component/identity.h"
#include "host/component/lent_arguments.h"
#include "host/component/text_output.h"

#include <new>

namespace partkeep {

namespace {

// Runs one operation: the object stays while it runs, whatever the host does meanwhile, and an exception becomes
// the result that the operation has for trouble.
template <class Operation>
HRESULT Run(IUnknown& object, HRESULT trouble, Operation operation) noexcept
{
    const ComPtr<IUnknown> kept(&object);
    try {
        return static_cast<HRESULT>(operation());
    } catch (...) {
        return trouble;
    }
}

} // namespace

HRESULT HostObject::Create(IUnknown* outer, REFIID id, void** result)
{
    if (outer != nullptr && id != IID_IUnknown) {
        return CLASS_E_NOAGGREGATION;
    }
    auto* object = new (std::nothrow) HostObject(outer);
    if (object == nullptr) {
        return E_OUTOFMEMORY;
    }
    const HRESULT status = object->inner_.QueryInterface(id, result);
    object->inner_.Release();
    return status;
}

HostObject::HostObject(IUnknown* outer)
    : outer_(outer != nullptr ? outer : &inner_), implementation_(TheModule().Services())
{
    TheModule().Lock();
}

HostObject::~HostObject()
{
    TheModule().Unlock();
}

HRESULT HostObject::Inner::QueryInterface(REFIID id, void** result)
{
    if (result == nullptr) {
        return E_POINTER;
    }
    *result = nullptr;
    if (id == IID_IUnknown) {
        *result = this;
        AddRef();
        return S_OK;
    }
    if (id == IID_IDispatch || id == host_interface_id) {
        *result = static_cast<::IPartkeepReadImpl*>(&object_);
    } else if (id == IID_ISupportErrorInfo) {
        *result = static_cast<ISupportErrorInfo*>(&object_);
    } else {
        return E_NOINTERFACE;
    }
    object_.AddRef();
    return S_OK;
}

ULONG HostObject::Inner::Release()
{
    const ULONG left = --references_;
    if (left == 0) {
        delete &object_;
    }
    return left;
}

HRESULT HostObject::GetTypeInfoCount(UINT* count)
{
    if (count == nullptr) {
        return E_POINTER;
    }
    *count = 1;
    return S_OK;
}

HRESULT HostObject::GetTypeInfo(UINT index, LCID, ITypeInfo** description)
{
    if (description == nullptr) {
        return E_POINTER;
    }
    *description = nullptr;
    if (index != 0) {
        return DISP_E_BADINDEX;
    }
    const ComPtr<ITypeInfo> loaded = TheModule().InterfaceDescription();
    return loaded ? loaded->QueryInterface(IID_ITypeInfo, reinterpret_cast<void**>(description))
                  : TYPE_E_CANTLOADLIBRARY;
}

HRESULT HostObject::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids)
{
    if (names == nullptr || ids == nullptr || count == 0) {
        return E_INVALIDARG;
    }
    const ComPtr<ITypeInfo> description = TheModule().InterfaceDescription();
    return description ? description->GetIDsOfNames(names, count, ids) : TYPE_E_CANTLOADLIBRARY;
}

HRESULT HostObject::Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* arguments, VARIANT* result,
                           EXCEPINFO* trouble, UINT* bad_argument)
{
    return Run(*outer_, E_FAIL, [&]() -> HRESULT {
        const ComPtr<ITypeInfo> description = TheModule().InterfaceDescription();
        if (!description) {
            return TYPE_E_CANTLOADLIBRARY;
        }
        LentArguments lent;
        const HRESULT status = lent.Take(*description.Get(), id, arguments);
        if (FAILED(status)) {
            return status;
        }
        const HRESULT called = description->Invoke(static_cast<::IPartkeepReadImpl*>(this), id, flags,
                                                   lent.Parameters(), result, trouble, bad_argument);
        lent.GiveBack();
        return called;
    });
}

HRESULT HostObject::InterfaceSupportsErrorInfo(REFIID id)
{
    return id == host_interface_id ? S_OK : S_FALSE;
}

HRESULT HostObject::InvokePartkeep()
{
    return Run(*outer_, S_FALSE, [&] { return implementation_.InvokePartkeep(); });
}

HRESULT HostObject::GetFilePath(BSTR* o_PartFileName)
{
    return Run(*outer_, S_FALSE, [&] { return implementation_.GetFilePath(TextOutput(o_PartFileName)); });
}

HRESULT HostObject::GetSelectedPartInfo(BSTR* o_PartFileName, BSTR* o_PartName, BSTR* o_PartComment,
                                        BSTR* o_MaterialType, double* o_Thickness, BSTR* o_Qty)
{
    return Run(*outer_, S_FALSE, [&] {
        return implementation_.GetSelectedPartInfo(TextOutput(o_PartFileName), TextOutput(o_PartName),
                                                   TextOutput(o_PartComment), TextOutput(o_MaterialType), o_Thickness,
                                                   TextOutput(o_Qty));
    });
}

HRESULT HostObject::InvokePartkeepMultiSelection(LONG i_MultipleSelectionAllowed)
{
    return Run(*outer_, S_OK, [&] { return implementation_.InvokePartkeepMultiSelection(i_MultipleSelectionAllowed); });
}

HRESULT HostObject::NumberOfPartsSelected(LONG* o_NoOfParts)
{
    return Run(*outer_, S_OK, [&] { return implementation_.NumberOfPartsSelected(NumberOutput(o_NoOfParts)); });
}

HRESULT HostObject::GetPartInfo(LONG i_index, BSTR* o_serverName, BSTR* o_folderName, BSTR* o_FilePathName,
                                BSTR* o_SYFileName, BSTR* o_NCFileName, BSTR* o_PartName, BSTR* o_PartComment,
                                BSTR* o_MaterialType, BSTR* o_MachineName, LONG* o_MachineType, double* o_Thickness,
                                BSTR* o_Qty)
{
    return Run(*outer_, S_OK, [&] {
        return implementation_.GetPartInfo(i_index, TextOutput(o_serverName), TextOutput(o_folderName),
                                           TextOutput(o_FilePathName), TextOutput(o_SYFileName),
                                           TextOutput(o_NCFileName), TextOutput(o_PartName), TextOutput(o_PartComment),
                                           TextOutput(o_MaterialType), TextOutput(o_MachineName),
                                           NumberOutput(o_MachineType), o_Thickness, TextOutput(o_Qty));
    });
}

HRESULT HostObject::SetWorkingFolder(BSTR i_WorkingFolderName)
{
    return Run(*outer_, S_OK, [&] { return implementation_.SetWorkingFolder(InputText(i_WorkingFolderName)); });
}

HRESULT HostObject::ReadCADDataForTessara(BSTR i_serverName, BSTR i_folderName, BSTR i_partName, BSTR i_dataType,
                                          BSTR* o_FilePathName, BSTR* o_PartName, BSTR* o_PartComment,
                                          BSTR* o_MaterialType, double* o_Thickness, BSTR* o_Qty)
{
    return Run(*outer_, S_FALSE, [&] {
        return implementation_.ReadCADDataForTessara(
            InputText(i_serverName), InputText(i_folderName), InputText(i_partName), InputText(i_dataType),
            TextOutput(o_FilePathName), TextOutput(o_PartName), TextOutput(o_PartComment), TextOutput(o_MaterialType),
            o_Thickness, TextOutput(o_Qty));
    });
}

HRESULT HostObject::SetLanguageID(LONG i_languageID)
{
    return Run(*outer_, S_OK, [&] { return implementation_.SetLanguageID(i_languageID); });
}

} // namespace partkeep
