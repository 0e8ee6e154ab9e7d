#include "windows/hosted_control.h"

#include "windows/com_ptr.h"
#include "windows/control_site.h"
#include "windows/dialog_scale.h"
#include "windows/dispatch_call.h"
#include "windows/site_window.h"

#include <cstring>

namespace partkeep {

namespace {

class CHostedContent;

// Hears the control's events for as long as its content listens.
class CEventSink final : public IDispatch {
public:
    CEventSink(CHostedContent* content, const IID& source) : content_(content), source_(source)
    {
        ++TheLiveCounts().com_objects;
    }
    CEventSink(const CEventSink&) = delete;
    CEventSink& operator=(const CEventSink&) = delete;

    void Close() { content_ = nullptr; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** result) override
    {
        const bool known = id == IID_IUnknown || id == IID_IDispatch || id == source_;
        *result = known ? static_cast<IDispatch*>(this) : nullptr;
        if (!known) {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG left = --references_;
        if (left == 0) {
            delete this;
        }
        return left;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override
    {
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID event, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT*) override;

private:
    ~CEventSink() { --TheLiveCounts().com_objects; }

    std::atomic<ULONG> references_{0};
    CHostedContent* content_;
    IID source_;
};

class CHostedContent final : public CSiteContent {
public:
    explicit CHostedContent(HWND window) : window_(window), site_(new CControlSite(window)) {}
    ~CHostedContent() override { Close(); }

    bool Create(const ControlOrder& order);

    ControlResult Invoke(std::int32_t dispatch_id, InvokeKind kind, std::span<const ControlArgument> arguments,
                         ControlType result) override;
    void SetEventSink(std::function<void(std::int32_t)> sink) override { listener_ = std::move(sink); }
    void OnSize(const RECT& client) override;
    void OnFocus() override;
    void OnEvent(std::int32_t dispatch_id);
    void OnDestroy() override { Close(); }
    bool TranslateKey(MSG& message) override;

private:
    bool Activate(const ControlOrder& order);
    void Connect();
    void Close();

    HWND window_;
    CComPtr<CControlSite> site_;
    CComPtr<IOleObject> object_;
    CComPtr<IDispatch> dispatch_;
    CComPtr<IConnectionPoint> point_;
    CComPtr<CEventSink> sink_;
    DWORD connection_ = 0;
    bool ole_started_ = false;
    std::function<void(std::int32_t)> listener_;
};

HRESULT CEventSink::Invoke(DISPID event, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*)
{
    const CComPtr<CEventSink> self(this);
    if (content_ != nullptr) {
        content_->OnEvent(event);
    }
    return S_OK;
}

bool InSingleThreadedApartment()
{
    APTTYPE type = APTTYPE_MTA;
    APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
    return SUCCEEDED(CoGetApartmentType(&type, &qualifier)) && (type == APTTYPE_STA || type == APTTYPE_MAINSTA);
}

// The dispatch interface that a control names as its default source, or else its first source of all.
IID SourceInterface(IUnknown& control, IConnectionPointContainer& container)
{
    IID source = IID_NULL;
    CComPtr<IProvideClassInfo2> information;
    if (SUCCEEDED(control.QueryInterface(IID_IProvideClassInfo2, information.PutVoid())) &&
        SUCCEEDED(information->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &source))) {
        return source;
    }
    CComPtr<IEnumConnectionPoints> points;
    CComPtr<IConnectionPoint> first;
    if (SUCCEEDED(container.EnumConnectionPoints(points.Put())) && points->Next(1, first.Put(), nullptr) == S_OK) {
        first->GetConnectionInterface(&source);
    }
    return source;
}

void SetExtentOf(HWND window, IOleObject& object, const std::optional<SIZE>& extent, const RECT& client)
{
    constexpr int units_per_inch = 2540;
    const int dpi = DpiOf(window);
    SIZEL size{MulDiv(client.right, units_per_inch, dpi), MulDiv(client.bottom, units_per_inch, dpi)};
    if (extent) {
        size = {extent->cx, extent->cy};
    }
    object.SetExtent(DVASPECT_CONTENT, &size);
}

bool CHostedContent::Create(const ControlOrder& order)
{
    ole_started_ = SUCCEEDED(OleInitialize(nullptr));
    if (!InSingleThreadedApartment()) {
        return false;
    }
    if (FAILED(CoCreateInstance(order.class_id, nullptr, CLSCTX_INPROC_SERVER, IID_IOleObject, object_.PutVoid()))) {
        return false;
    }
    object_->QueryInterface(IID_IDispatch, dispatch_.PutVoid());
    if (!dispatch_ || !Activate(order)) {
        return false;
    }
    Connect();
    return true;
}

// Some controls want their site before their state and say so.
bool CHostedContent::Activate(const ControlOrder& order)
{
    RECT client;
    GetClientRect(window_, &client);
    DWORD traits = 0;
    object_->GetMiscStatus(DVASPECT_CONTENT, &traits);
    const bool site_first = (traits & OLEMISC_SETCLIENTSITEFIRST) != 0;
    if (site_first) {
        object_->SetClientSite(site_.Get());
    }
    CComPtr<IPersistStreamInit> state;
    if (SUCCEEDED(object_->QueryInterface(IID_IPersistStreamInit, state.PutVoid()))) {
        state->InitNew();
    }
    if (!site_first) {
        object_->SetClientSite(site_.Get());
    }
    SetExtentOf(window_, *object_.Get(), order.extent, client);
    const HRESULT active = object_->DoVerb(OLEIVERB_INPLACEACTIVATE, nullptr, site_.Get(), 0, window_, &client);
    if (!order.visible) {
        object_->DoVerb(OLEIVERB_HIDE, nullptr, site_.Get(), 0, window_, &client);
        return true; // one that is never shown serves without a window as well
    }
    return SUCCEEDED(active);
}

void CHostedContent::Connect()
{
    CComPtr<IConnectionPointContainer> container;
    if (FAILED(object_->QueryInterface(IID_IConnectionPointContainer, container.PutVoid()))) {
        return;
    }
    const IID source = SourceInterface(*object_.Get(), *container.Get());
    if (source == IID_NULL || FAILED(container->FindConnectionPoint(source, point_.Put()))) {
        return;
    }
    sink_ = CComPtr<CEventSink>(new CEventSink(this, source));
    if (FAILED(point_->Advise(sink_.Get(), &connection_))) {
        point_.Reset();
    }
}

void CHostedContent::Close()
{
    window_ = nullptr;
    listener_ = nullptr;
    if (point_) {
        point_->Unadvise(connection_);
        point_.Reset();
    }
    if (sink_) {
        sink_->Close();
        sink_.Reset();
    }
    dispatch_.Reset();
    if (object_) {
        const CComPtr<IOleObject> object = std::move(object_);
        object->Close(OLECLOSE_NOSAVE);
        object->SetClientSite(nullptr);
    }
    if (site_) {
        site_->Close();
        site_.Reset();
    }
    if (std::exchange(ole_started_, false)) {
        OleUninitialize();
    }
}

ControlResult CHostedContent::Invoke(std::int32_t dispatch_id, InvokeKind kind,
                                     std::span<const ControlArgument> arguments, ControlType result)
{
    const CComPtr<IDispatch> control = dispatch_; // outlives a close from within the call
    if (!control) {
        return {};
    }
    return CallDispatch(*control.Get(), dispatch_id, kind, arguments, result);
}

// The listener may close this, and the copy of it may find no memory, which must not reach the control.
void CHostedContent::OnEvent(std::int32_t dispatch_id)
{
    try {
        if (const auto listener = listener_; listener) {
            listener(dispatch_id);
        }
    } catch (...) {
        return;
    }
}

void CHostedContent::OnSize(const RECT& client)
{
    CComPtr<IOleInPlaceObject> in_place;
    if (object_ && SUCCEEDED(object_->QueryInterface(IID_IOleInPlaceObject, in_place.PutVoid()))) {
        SetExtentOf(window_, *object_.Get(), std::nullopt, client);
        in_place->SetObjectRects(&client, &client);
    }
}

void CHostedContent::OnFocus()
{
    CComPtr<IOleInPlaceObject> in_place;
    HWND control_window = nullptr;
    if (!object_ || FAILED(object_->QueryInterface(IID_IOleInPlaceObject, in_place.PutVoid()))) {
        return;
    }
    RECT client;
    GetClientRect(window_, &client);
    object_->DoVerb(OLEIVERB_UIACTIVATE, nullptr, site_.Get(), 0, window_, &client);
    if (SUCCEEDED(in_place->GetWindow(&control_window)) && GetFocus() == window_) {
        SetFocus(control_window);
    }
}

bool CHostedContent::TranslateKey(MSG& message)
{
    CComPtr<IOleInPlaceActiveObject> active;
    return object_ && SUCCEEDED(object_->QueryInterface(IID_IOleInPlaceActiveObject, active.PutVoid())) &&
           active->TranslateAccelerator(&message) == S_OK;
}

// The content belongs to the window, and the frame of a hidden one to this.
class CWinHostedControl final : public IHostedControl {
public:
    CWinHostedControl(std::shared_ptr<CSiteContent> content, HWND frame) : content_(std::move(content)), frame_(frame)
    {
    }
    ~CWinHostedControl() override
    {
        content_->SetEventSink(nullptr);
        if (frame_ != nullptr) {
            DestroyWindow(frame_);
        }
    }
    CWinHostedControl(const CWinHostedControl&) = delete;
    CWinHostedControl& operator=(const CWinHostedControl&) = delete;

    ControlResult Invoke(std::int32_t dispatch_id, InvokeKind kind, std::span<const ControlArgument> arguments,
                         ControlType result) override
    {
        const std::shared_ptr<CSiteContent> content = content_;
        return content->Invoke(dispatch_id, kind, arguments, result);
    }
    void SetEventSink(std::function<void(std::int32_t)> sink) override { content_->SetEventSink(std::move(sink)); }

private:
    std::shared_ptr<CSiteContent> content_;
    HWND frame_;
};

} // namespace

std::shared_ptr<CSiteContent> CreateControlInSite(HWND site, const ControlOrder& order)
{
    auto content = std::make_shared<CHostedContent>(site);
    if (!content->Create(order)) {
        return nullptr;
    }
    SetSiteContent(site, content);
    return content;
}

std::unique_ptr<IHostedControl> MakeHostedControl(std::shared_ptr<CSiteContent> content)
{
    return std::make_unique<CWinHostedControl>(std::move(content), nullptr);
}

CLSID SystemClassId(const ClassId& id)
{
    CLSID converted{id.data1, id.data2, id.data3, {}};
    std::memcpy(converted.Data4, id.data4.data(), id.data4.size());
    return converted;
}

std::unique_ptr<IHostedControl> CHiddenControls::CreateHidden(const ClassId& class_id, std::int32_t control_id,
                                                              int width, int height)
{
    HWND frame = CreateHiddenFrame(module_);
    HWND site = CreateSiteWindow(module_, frame, control_id, {0, 0, width, height}, 0);
    std::shared_ptr<CSiteContent> content;
    if (site != nullptr) {
        content = CreateControlInSite(site, {SystemClassId(class_id), false, std::nullopt});
    }
    if (content == nullptr) {
        DestroyWindow(frame);
        return nullptr;
    }
    return std::make_unique<CWinHostedControl>(std::move(content), frame);
}

} // namespace partkeep
