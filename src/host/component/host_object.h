// The host object as the component model sees it: a thin layer over PartkeepReadImpl that checks pointers,
// converts texts, maps results and lets no exception out.
#pragma once

#include "host/partkeep_read_impl.h"

#include <windows.h>

#include <oaidl.h>

#include "partkeep_read.h" // made from partkeep_read.idl

#include <atomic>

namespace partkeep {

// The object lives as long as a reference on its inner IUnknown is held. All its other interfaces speak for the
// outer object where it has been made part of one.
class CHostObject final : public ::IPartkeepReadImpl, public ISupportErrorInfo {
public:
    // With an outer object only IUnknown may be asked for, and what is handed out is the inner one.
    static HRESULT Create(IUnknown* outer, REFIID id, void** result);
    CHostObject(const CHostObject&) = delete;
    CHostObject& operator=(const CHostObject&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** result) override
    {
        return outer_->QueryInterface(id, result);
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return outer_->AddRef(); }
    ULONG STDMETHODCALLTYPE Release() override { return outer_->Release(); }

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** description) override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID locale,
                                            DISPID* ids) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID reserved, LCID locale, WORD flags, DISPPARAMS* arguments,
                                     VARIANT* result, EXCEPINFO* trouble, UINT* bad_argument) override;

    HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID id) override;

    HRESULT STDMETHODCALLTYPE InvokePartkeep() override;
    HRESULT STDMETHODCALLTYPE GetFilePath(BSTR* o_PartFileName) override;
    HRESULT STDMETHODCALLTYPE GetSelectedPartInfo(BSTR* o_PartFileName, BSTR* o_PartName, BSTR* o_PartComment,
                                                  BSTR* o_MaterialType, double* o_Thickness, BSTR* o_Qty) override;
    HRESULT STDMETHODCALLTYPE InvokePartkeepMultiSelection(LONG i_MultipleSelectionAllowed) override;
    HRESULT STDMETHODCALLTYPE NumberOfPartsSelected(LONG* o_NoOfParts) override;
    HRESULT STDMETHODCALLTYPE GetPartInfo(LONG i_index, BSTR* o_serverName, BSTR* o_folderName, BSTR* o_FilePathName,
                                          BSTR* o_SYFileName, BSTR* o_NCFileName, BSTR* o_PartName, BSTR* o_PartComment,
                                          BSTR* o_MaterialType, BSTR* o_MachineName, LONG* o_MachineType,
                                          double* o_Thickness, BSTR* o_Qty) override;
    HRESULT STDMETHODCALLTYPE SetWorkingFolder(BSTR i_WorkingFolderName) override;
    HRESULT STDMETHODCALLTYPE ReadCADDataForTessara(BSTR i_serverName, BSTR i_folderName, BSTR i_partName,
                                                    BSTR i_dataType, BSTR* o_FilePathName, BSTR* o_PartName,
                                                    BSTR* o_PartComment, BSTR* o_MaterialType, double* o_Thickness,
                                                    BSTR* o_Qty) override;
    HRESULT STDMETHODCALLTYPE SetLanguageID(LONG i_languageID) override;

private:
    class CInner final : public IUnknown {
    public:
        explicit CInner(CHostObject& object) : object_(object) {}
        HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** result) override;
        ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
        ULONG STDMETHODCALLTYPE Release() override;

    private:
        CHostObject& object_;
        std::atomic<ULONG> references_{1};
    };

    explicit CHostObject(IUnknown* outer);
    ~CHostObject();

    CInner inner_{*this};
    IUnknown* outer_; // not counted: the outer object owns this one
    PartkeepReadImpl implementation_;
};

} // namespace partkeep
