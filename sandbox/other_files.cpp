#include "sandbox/other_files.h"

#include <hdf5.h>

#include <algorithm>
#include <string>

namespace sandbox {

namespace {

// An open object of the library; invalid if below 0.
class Handle {
public:
  Handle(hid_t id, herr_t (*close)(hid_t)) : id_(id), close_(close) {}
  ~Handle() {
    if (id_ >= 0) close_(id_);
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

  hid_t get() const { return id_; }
  bool is_open() const { return id_ >= 0; }

private:
  hid_t id_;
  herr_t (*close_)(hid_t);
};

// Prepares a name from the file for use in a sentence.
std::string shown(const char* name) {
  constexpr std::size_t longest = 40;
  std::string text = name;
  if (text.size() > longest) text.replace(longest, std::string::npos, "...");
  std::ranges::replace_if(
      text, [](char letter) { return letter < ' ' || letter > '~'; }, '?');
  return '"' + text + '"';
}

struct Finding {
  std::string cause; // empty: nothing was found
};

// Opening a data set does not read its data, so its storage can be checked without touching another file.
const char* storage_elsewhere(hid_t object) {
  if (H5Iget_type(object) != H5I_DATASET) return nullptr;
  const Handle properties(H5Dget_create_plist(object), &H5Pclose);
  if (!properties.is_open()) return nullptr; // the NetCDF library will fail on it too
  if (H5Pget_layout(properties.get()) == H5D_VIRTUAL) return "is a virtual data set";
  return H5Pget_external_count(properties.get()) > 0 ? "has external storage" : nullptr;
}

// Called for every link in the file. A result other than 0 ends the visit.
herr_t look_at(hid_t group, const char* name, const H5L_info_t* link, void* finding) {
  const char* kind = nullptr;
  if (link->type == H5L_TYPE_HARD) {
    const Handle object(H5Oopen(group, name, H5P_DEFAULT), &H5Oclose);
    if (object.is_open()) kind = storage_elsewhere(object.get());
  } else if (link->type != H5L_TYPE_SOFT) {
    kind = "is an external link"; // or a link type that only a plug-in knows
  }
  if (!kind) return 0;
  static_cast<Finding*>(finding)->cause = shown(name) + " " + kind;
  return 1;
}

} // namespace

std::string other_files_in(const char* name) {
  H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr);
  if (H5Fis_hdf5(name) <= 0) return {};
  const Handle file(H5Fopen(name, H5F_ACC_RDONLY, H5P_DEFAULT), &H5Fclose);
  Finding finding;
  if (!file.is_open() || H5Lvisit(file.get(), H5_INDEX_NAME, H5_ITER_NATIVE, &look_at, &finding) < 0)
    return "is damaged: the HDF5 library fails on it";
  if (finding.cause.empty()) return {};
  return "takes data from another file, which is not read: " + finding.cause + "; put all data into the one file";
}

} // namespace sandbox
