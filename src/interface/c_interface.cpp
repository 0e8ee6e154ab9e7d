// The C interface over the host object: text in UTF-8, paths native, results as numbers. The only place where
// native paths and the core's own meet.

#include "partkeep_read.h"

#include "host/partkeep_read_impl.h"
#include "interface/owned_services.h"
#include "platform/files.h"
#include "platform/text.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

struct partkeep_read {
    std::unique_ptr<partkeep::IOwnedServices> services = partkeep::MakeOwnedServices();
    partkeep::PartkeepReadImpl object{services->Services()};
};

namespace {

using partkeep::HostResult;

std::u16string WideInput(const char* text)
{
    return text != nullptr ? partkeep::WidenText(text, partkeep::utf8_code_page) : std::u16string();
}

// One text output on its way out: written when the operation has written it, and only when the host asks for it.
class COutput {
public:
    enum class Form { Text, Path };

    explicit COutput(char** target, Form form = Form::Text) : target_(target), form_(form) {}

    std::u16string* Receiver() { return target_ != nullptr ? &text_ : nullptr; }

    // For outputs that are written whatever comes: nothing unset goes back to the host.
    void Clear()
    {
        if (target_ != nullptr) {
            *target_ = nullptr;
        }
    }

    // False when memory has run out.
    bool Prepare()
    {
        if (target_ == nullptr) {
            return true;
        }
        const std::string narrow = form_ == Form::Path && !text_.empty()
                                       ? partkeep::NativePath(text_)
                                       : partkeep::NarrowText(text_, partkeep::utf8_code_page);
        copy_.reset(static_cast<char*>(std::malloc(narrow.size() + 1)));
        if (copy_ == nullptr) {
            return false;
        }
        std::memcpy(copy_.get(), narrow.c_str(), narrow.size() + 1);
        return true;
    }

    void HandOver()
    {
        if (target_ != nullptr) {
            *target_ = copy_.release();
        }
    }

private:
    struct Free {
        void operator()(char* text) const { std::free(text); }
    };

    char** target_;
    Form form_;
    std::u16string text_;
    std::unique_ptr<char, Free> copy_;
};

template <typename... Outputs>
void ClearAll(Outputs&... outputs)
{
    (outputs.Clear(), ...);
}

// All outputs or none: what can fail comes before the first is handed over.
template <typename... Outputs>
bool HandOverAll(Outputs&... outputs)
{
    if (!(outputs.Prepare() && ...)) {
        return false;
    }
    (outputs.HandOver(), ...);
    return true;
}

// An exception must not leave through a C function; it becomes the operation's result for trouble.
template <typename Operation>
int32_t Run(partkeep_read* object, int32_t trouble, Operation operation) noexcept
{
    if (object == nullptr) {
        return PARTKEEP_READ_FALSE;
    }
    try {
        return operation(object->object);
    } catch (...) {
        return trouble;
    }
}

int32_t Number(HostResult result)
{
    return static_cast<int32_t>(result);
}

} // namespace

int32_t partkeep_read_version(void)
{
    return PARTKEEP_READ_VERSION;
}

partkeep_read* partkeep_read_create(void)
{
    try {
        return std::make_unique<partkeep_read>().release();
    } catch (...) {
        return nullptr;
    }
}

void partkeep_read_destroy(partkeep_read* object)
{
    const std::unique_ptr<partkeep_read> owned(object);
}

void partkeep_read_free(char* text)
{
    std::free(text);
}

int32_t partkeep_read_set_working_folder(partkeep_read* object, const char* working_folder)
{
    return Run(object, PARTKEEP_READ_OK, [&](auto& impl) {
        const std::string native = working_folder != nullptr ? working_folder : "";
        return Number(impl.SetWorkingFolder(partkeep::CorePath(native)));
    });
}

int32_t partkeep_read_set_language_id(partkeep_read* object, int32_t language_id)
{
    return Run(object, PARTKEEP_READ_OK, [&](auto& impl) { return Number(impl.SetLanguageID(language_id)); });
}

int32_t partkeep_read_invoke(partkeep_read* object)
{
    return Run(object, PARTKEEP_READ_FALSE, [](auto& impl) { return Number(impl.InvokePartkeep()); });
}

int32_t partkeep_read_invoke_multi_selection(partkeep_read* object, int32_t multiple_selection_allowed)
{
    return Run(object, PARTKEEP_READ_OK,
               [&](auto& impl) { return Number(impl.InvokePartkeepMultiSelection(multiple_selection_allowed)); });
}

int32_t partkeep_read_number_of_parts_selected(partkeep_read* object, int32_t* number)
{
    return Run(object, PARTKEEP_READ_OK, [&](auto& impl) { return Number(impl.NumberOfPartsSelected(number)); });
}

int32_t partkeep_read_get_file_path(partkeep_read* object, char** part_file_name)
{
    return partkeep_read_get_selected_part_info(object, part_file_name, nullptr, nullptr, nullptr, nullptr, nullptr);
}

int32_t partkeep_read_get_selected_part_info(partkeep_read* object, char** part_file_name, char** part_name,
                                             char** part_comment, char** material_type, double* thickness,
                                             char** quantity)
{
    return Run(object, PARTKEEP_READ_FALSE, [&](auto& impl) {
        COutput file(part_file_name, COutput::Form::Path);
        COutput name(part_name);
        COutput comment(part_comment);
        COutput material(material_type);
        COutput qty(quantity);
        double part_thickness = 0.0;
        const HostResult result = impl.GetSelectedPartInfo(file.Receiver(), name.Receiver(), comment.Receiver(),
                                                           material.Receiver(), &part_thickness, qty.Receiver());
        if (result != HostResult::Ok || !HandOverAll(file, name, comment, material, qty)) {
            return PARTKEEP_READ_FALSE;
        }
        if (thickness != nullptr) {
            *thickness = part_thickness;
        }
        return PARTKEEP_READ_OK;
    });
}

int32_t partkeep_read_get_part_info(partkeep_read* object, int32_t index, char** server_name, char** folder_name,
                                    char** file_path_name, char** sy_file_name, char** nc_file_name, char** part_name,
                                    char** part_comment, char** material_type, char** machine_name,
                                    int32_t* machine_type, double* thickness, char** quantity)
{
    return Run(object, PARTKEEP_READ_OK, [&](auto& impl) {
        COutput server(server_name);
        COutput folder(folder_name);
        COutput file(file_path_name, COutput::Form::Path);
        COutput sy(sy_file_name, COutput::Form::Path);
        COutput nc(nc_file_name, COutput::Form::Path);
        COutput name(part_name);
        COutput comment(part_comment);
        COutput material(material_type);
        COutput machine(machine_name);
        COutput qty(quantity);
        ClearAll(server, folder, file, sy, nc, name, comment, material, machine, qty);
        impl.GetPartInfo(index, server.Receiver(), folder.Receiver(), file.Receiver(), sy.Receiver(), nc.Receiver(),
                         name.Receiver(), comment.Receiver(), material.Receiver(), machine.Receiver(), machine_type,
                         thickness, qty.Receiver());
        HandOverAll(server, folder, file, sy, nc, name, comment, material, machine, qty);
        return PARTKEEP_READ_OK;
    });
}

int32_t partkeep_read_read_cad_data(partkeep_read* object, const char* server_name, const char* folder_name,
                                    const char* part_name, const char* data_type, char** file_path_name,
                                    char** read_part_name, char** part_comment, char** material_type, double* thickness,
                                    char** quantity)
{
    return Run(object, PARTKEEP_READ_FALSE, [&](auto& impl) {
        COutput file(file_path_name, COutput::Form::Path);
        COutput name(read_part_name);
        COutput comment(part_comment);
        COutput material(material_type);
        COutput qty(quantity);
        ClearAll(file, name, comment, material, qty);
        if (thickness != nullptr) {
            *thickness = 0.0;
        }
        double part_thickness = 0.0;
        const HostResult result = impl.ReadCADDataForTessara(
            WideInput(server_name), WideInput(folder_name), WideInput(part_name), WideInput(data_type), file.Receiver(),
            name.Receiver(), comment.Receiver(), material.Receiver(), &part_thickness, qty.Receiver());
        if (!HandOverAll(file, name, comment, material, qty)) {
            return PARTKEEP_READ_FALSE;
        }
        if (thickness != nullptr) {
            *thickness = part_thickness;
        }
        return Number(result);
    });
}
