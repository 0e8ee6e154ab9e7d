#include "host/component/host_object.h"

#include "host/component/component_module.h"
#include "host/component/host_outputs.h"
#include "host/component/identity.h"
#include "host/component/lent_arguments.h"

#include <new>

namespace partkeep {

namespace {

// Runs one operation: the object stays while it runs, whatever the host does meanwhile, and an exception becomes
// the result that the operation has for trouble.
template <class Operation>
HRESULT Run(IUnknown& object, HRESULT trouble, Operation operation) noexcept
{
    const CComPtr<IUnknown> kept(&object);
    try {
        return static_cast<HRESULT>(operation());
    } catch (...) {
        return trouble;
    }
}

// A success whose outputs do not arrive is none.
HRESULT Deliver(CHostOutputs& outputs, HostResult result)
{
    return result == HostResult::Ok && outputs.HandOver() ? S_OK : S_FALSE;
}

} // namespace

HRESULT CHostObject::Create(IUnknown* outer, REFIID id, void** result)
{
    if (outer != nullptr && id != IID_IUnknown) {
        return CLASS_E_NOAGGREGATION;
    }
    auto* object = new (std::nothrow) CHostObject(outer);
    if (object == nullptr) {
        return E_OUTOFMEMORY;
    }
    const HRESULT status = object->inner_.QueryInterface(id, result);
    object->inner_.Release();
    return status;
}

CHostObject::CHostObject(IUnknown* outer)
    : outer_(outer != nullptr ? outer : &inner_), implementation_(TheModule().Services())
{
    TheModule().Lock();
}

CHostObject::~CHostObject()
{
    TheModule().Unlock();
}

HRESULT CHostObject::CInner::QueryInterface(REFIID id, void** result)
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

ULONG CHostObject::CInner::Release()
{
    const ULONG left = --references_;
    if (left == 0) {
        delete &object_;
    }
    return left;
}

HRESULT CHostObject::GetTypeInfoCount(UINT* count)
{
    if (count == nullptr) {
        return E_POINTER;
    }
    *count = 1;
    return S_OK;
}

HRESULT CHostObject::GetTypeInfo(UINT index, LCID, ITypeInfo** description)
{
    if (description == nullptr) {
        return E_POINTER;
    }
    *description = nullptr;
    if (index != 0) {
        return DISP_E_BADINDEX;
    }
    const CComPtr<ITypeInfo> loaded = TheModule().InterfaceDescription();
    return loaded ? loaded->QueryInterface(IID_ITypeInfo, reinterpret_cast<void**>(description))
                  : TYPE_E_CANTLOADLIBRARY;
}

HRESULT CHostObject::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids)
{
    if (names == nullptr || ids == nullptr || count == 0) {
        return E_INVALIDARG;
    }
    const CComPtr<ITypeInfo> description = TheModule().InterfaceDescription();
    return description ? description->GetIDsOfNames(names, count, ids) : TYPE_E_CANTLOADLIBRARY;
}

HRESULT CHostObject::Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* arguments, VARIANT* result,
                            EXCEPINFO* trouble, UINT* bad_argument)
{
    return Run(*outer_, E_FAIL, [&]() -> HRESULT {
        const CComPtr<ITypeInfo> description = TheModule().InterfaceDescription();
        if (!description) {
            return TYPE_E_CANTLOADLIBRARY;
        }
        CLentArguments lent;
        const HRESULT status = lent.Take(*description.Get(), id, arguments, bad_argument);
        if (FAILED(status)) {
            return status;
        }
        const HRESULT called = description->Invoke(static_cast<::IPartkeepReadImpl*>(this), id, flags,
                                                   lent.Parameters(), result, trouble, bad_argument);
        lent.GiveBack();
        return called;
    });
}

HRESULT CHostObject::InterfaceSupportsErrorInfo(REFIID id)
{
    return id == host_interface_id ? S_OK : S_FALSE;
}

HRESULT CHostObject::InvokePartkeep()
{
    return Run(*outer_, S_FALSE, [&] { return implementation_.InvokePartkeep(); });
}

HRESULT CHostObject::GetFilePath(BSTR* o_PartFileName)
{
    CHostOutputs outputs(CHostOutputs::Start::Untouched);
    return Run(*outer_, S_FALSE,
               [&] { return Deliver(outputs, implementation_.GetFilePath(outputs.Lend(o_PartFileName))); });
}

HRESULT CHostObject::GetSelectedPartInfo(BSTR* o_PartFileName, BSTR* o_PartName, BSTR* o_PartComment,
                                         BSTR* o_MaterialType, double* o_Thickness, BSTR* o_Qty)
{
    CHostOutputs outputs(CHostOutputs::Start::Untouched);
    return Run(*outer_, S_FALSE, [&] {
        return Deliver(outputs, implementation_.GetSelectedPartInfo(
                                    outputs.Lend(o_PartFileName), outputs.Lend(o_PartName), outputs.Lend(o_PartComment),
                                    outputs.Lend(o_MaterialType), outputs.Lend(o_Thickness), outputs.Lend(o_Qty)));
    });
}

HRESULT CHostObject::InvokePartkeepMultiSelection(LONG i_MultipleSelectionAllowed)
{
    return Run(*outer_, S_OK, [&] { return implementation_.InvokePartkeepMultiSelection(i_MultipleSelectionAllowed); });
}

HRESULT CHostObject::NumberOfPartsSelected(LONG* o_NoOfParts)
{
    CHostOutputs outputs(CHostOutputs::Start::Untouched);
    return Run(*outer_, S_OK,
               [&] { return Deliver(outputs, implementation_.NumberOfPartsSelected(outputs.Lend(o_NoOfParts))); });
}

HRESULT CHostObject::GetPartInfo(LONG i_index, BSTR* o_serverName, BSTR* o_folderName, BSTR* o_FilePathName,
                                 BSTR* o_SYFileName, BSTR* o_NCFileName, BSTR* o_PartName, BSTR* o_PartComment,
                                 BSTR* o_MaterialType, BSTR* o_MachineName, LONG* o_MachineType, double* o_Thickness,
                                 BSTR* o_Qty)
{
    CHostOutputs outputs(CHostOutputs::Start::Empty);
    return Run(*outer_, S_OK, [&] {
        implementation_.GetPartInfo(i_index, outputs.Lend(o_serverName), outputs.Lend(o_folderName),
                                    outputs.Lend(o_FilePathName), outputs.Lend(o_SYFileName),
                                    outputs.Lend(o_NCFileName), outputs.Lend(o_PartName), outputs.Lend(o_PartComment),
                                    outputs.Lend(o_MaterialType), outputs.Lend(o_MachineName),
                                    outputs.Lend(o_MachineType), outputs.Lend(o_Thickness), outputs.Lend(o_Qty));
        outputs.HandOver();
        return S_OK;
    });
}

HRESULT CHostObject::SetWorkingFolder(BSTR i_WorkingFolderName)
{
    return Run(*outer_, S_OK, [&] { return implementation_.SetWorkingFolder(InputText(i_WorkingFolderName)); });
}

HRESULT CHostObject::ReadCADDataForTessara(BSTR i_serverName, BSTR i_folderName, BSTR i_partName, BSTR i_dataType,
                                           BSTR* o_FilePathName, BSTR* o_PartName, BSTR* o_PartComment,
                                           BSTR* o_MaterialType, double* o_Thickness, BSTR* o_Qty)
{
    CHostOutputs outputs(CHostOutputs::Start::Empty);
    auto* path = outputs.Lend(o_FilePathName);
    auto* name = outputs.Lend(o_PartName);
    auto* comment = outputs.Lend(o_PartComment);
    auto* material = outputs.Lend(o_MaterialType);
    auto* thickness = outputs.Lend(o_Thickness);
    auto* quantity = outputs.Lend(o_Qty);
    return Run(*outer_, S_FALSE, [&] {
        return Deliver(outputs, implementation_.ReadCADDataForTessara(
                                    InputText(i_serverName), InputText(i_folderName), InputText(i_partName),
                                    InputText(i_dataType), path, name, comment, material, thickness, quantity));
    });
}

HRESULT CHostObject::SetLanguageID(LONG i_languageID)
{
    return Run(*outer_, S_OK, [&] { return implementation_.SetLanguageID(i_languageID); });
}

} // namespace partkeep
