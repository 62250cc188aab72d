// Data files by name: opening, reading and safe saving.
#pragma once

#include "dataset/binary_reader.h"
#include "dataset/dataset.h"
#include "platform/file_io.h"

#include <filesystem>

namespace vesk {

// Reads a data file over the freshly constructed `data` and reconciles it with its catalogue, if it has one.
// Afterwards a `file_version` above the current one says that the file is of a newer version.
//
// Throws file_open_exception: there is no file to read. data_file_exception: it is damaged or no data file.
// file_exception: the system failed to read it. catalogue_exception. After any of them `data` is of no use.
void read_data_file(const std::filesystem::path& file, prevesk_dataset_data_type& data);

// Saves `data` in the current layout; the file takes its place only when all of it is on the disk.
//
// Throws file_open_exception: nothing can be written there. file_exception: writing failed. The old file stays in both.
void save_data_file(const std::filesystem::path& file, const prevesk_dataset_data_type& data);

} // namespace vesk
