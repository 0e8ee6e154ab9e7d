// The C++ interface of Partkeep Read: the C interface with owned objects and std::string. Encodings, paths,
// results and threads are told in partkeep_read.h.
#pragma once

#include "partkeep_read.h"

#include <cstdint>
#include <memory>
#include <new>
#include <optional>
#include <string>

namespace partkeep_read_api {

struct Part {
    std::string server_name;
    std::string folder_name;
    std::string file_path_name;
    std::string sy_file_name;
    std::string nc_file_name;
    std::string part_name;
    std::string part_comment;
    std::string material_type;
    std::string machine_name;
    std::int32_t machine_type = 0;
    double thickness = 0.0;
    std::string quantity;
};

// The version of the library that was loaded, counted as PARTKEEP_READ_VERSION is.
inline std::int32_t LoadedVersion()
{
    return partkeep_read_version();
}

// Receives one text output and gives it back when it goes.
class Text {
public:
    Text() = default;
    ~Text() { partkeep_read_free(text_); }
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;

    char** Out() { return &text_; }
    [[nodiscard]] std::string Get() const { return text_ != nullptr ? text_ : ""; }

private:
    char* text_ = nullptr;
};

class Reader {
public:
    // Throws std::bad_alloc when memory has run out.
    Reader() : object_(partkeep_read_create())
    {
        if (object_ == nullptr) {
            throw std::bad_alloc();
        }
    }

    void SetWorkingFolder(const std::string& folder)
    {
        partkeep_read_set_working_folder(object_.get(), folder.c_str());
    }

    void SetLanguageId(std::int32_t language_id) { partkeep_read_set_language_id(object_.get(), language_id); }

    // True: confirmed. Parts picked are appended.
    bool Invoke() { return partkeep_read_invoke(object_.get()) == PARTKEEP_READ_OK; }

    // False: no install location found. A cancelled dialog is true.
    bool InvokeMultiSelection(bool several)
    {
        return partkeep_read_invoke_multi_selection(object_.get(), several ? 1 : 0) == PARTKEEP_READ_OK;
    }

    [[nodiscard]] std::int32_t NumberOfPartsSelected() const
    {
        std::int32_t number = 0;
        partkeep_read_number_of_parts_selected(object_.get(), &number);
        return number;
    }

    // The first part of all, with the fields that a host for one part needs; nothing when there is none.
    [[nodiscard]] std::optional<Part> FirstPart() const
    {
        Text file, name, comment, material, quantity;
        Part part;
        if (partkeep_read_get_selected_part_info(object_.get(), file.Out(), name.Out(), comment.Out(), material.Out(),
                                                 &part.thickness, quantity.Out()) != PARTKEEP_READ_OK) {
            return std::nullopt;
        }
        part.file_path_name = file.Get();
        part.part_name = name.Get();
        part.part_comment = comment.Get();
        part.material_type = material.Get();
        part.quantity = quantity.Get();
        return part;
    }

    // Empty texts and 0 for an index out of range.
    [[nodiscard]] Part PartInfo(std::int32_t index) const
    {
        Text server, folder, file, sy, nc, name, comment, material, machine, quantity;
        Part part;
        partkeep_read_get_part_info(object_.get(), index, server.Out(), folder.Out(), file.Out(), sy.Out(), nc.Out(),
                                    name.Out(), comment.Out(), material.Out(), machine.Out(), &part.machine_type,
                                    &part.thickness, quantity.Out());
        part.server_name = server.Get();
        part.folder_name = folder.Get();
        part.file_path_name = file.Get();
        part.sy_file_name = sy.Get();
        part.nc_file_name = nc.Get();
        part.part_name = name.Get();
        part.part_comment = comment.Get();
        part.material_type = material.Get();
        part.machine_name = machine.Get();
        part.quantity = quantity.Get();
        return part;
    }

    // The file, name, comment, material, undivided thickness and quantity of a named part; nothing when it was
    // not read.
    [[nodiscard]] std::optional<Part> ReadCadData(const std::string& server, const std::string& folder,
                                                  const std::string& name, const std::string& data_type = {})
    {
        Text file, read_name, comment, material, quantity;
        Part part;
        if (partkeep_read_read_cad_data(object_.get(), server.c_str(), folder.c_str(), name.c_str(), data_type.c_str(),
                                        file.Out(), read_name.Out(), comment.Out(), material.Out(), &part.thickness,
                                        quantity.Out()) != PARTKEEP_READ_OK) {
            return std::nullopt;
        }
        part.server_name = server;
        part.folder_name = folder;
        part.file_path_name = file.Get();
        part.part_name = read_name.Get();
        part.part_comment = comment.Get();
        part.material_type = material.Get();
        part.quantity = quantity.Get();
        return part;
    }

private:
    struct Destroy {
        void operator()(partkeep_read* object) const { partkeep_read_destroy(object); }
    };

    std::unique_ptr<partkeep_read, Destroy> object_;
};

} // namespace partkeep_read_api
