// Hydrodynamic linkage, through the library's own functions and files of the tests' own.
#include "fake_host.h"
#include "hydro_content.h"

#include <gmock/gmock.h>
#include <hdf5.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sys/stat.h>

namespace {

using testing::HasSubstr;

class HydroTest : public testing::Test {
protected:
  HydroTest() {
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder / "flows");
    host.load("MODELTYPE 2\nSEEDDATE 2 28 2008\nSEEDTIME 18 0 0\nENDJULIAN 2\nMINDT 0.0001\nFRACMAXTS 0.9\nNPRINT 1\n"
              "PRINTFUNC 1 0 2\nNUMDT 1\nDTFUNC 1 0 0.01\nSOLUTIONTYPE 2\nJMAS 1\nIQOPT 3\nHYDSKIPDATE 1 11 2000\n"
              "SCALV 10\nHYDROFILE \"flows\\river.hyd\"");
    host.load("FILENAME \"" + (folder / "river.vki").string() + "\"");
  }
  void write(const HydroContent& content) const { content.write(file); }
  void run(const std::string& change = "") {
    host.load(change);
    execute_model("tracer", &FakeHost::callback);
  }
  std::string refusal() { // without the file's name
    const std::string sentence = host.failures.empty() ? "" : host.failures.back();
    host.failures.clear();
    EXPECT_EQ(host.return_code, 3) << sentence;
    return sentence.starts_with(file + ": ") ? sentence.substr(file.size() + 2) : sentence;
  }
  std::string refused(const HydroContent& content) {
    write(content);
    run();
    return refusal();
  }

  std::filesystem::path folder =
      std::filesystem::path(testing::TempDir()) /
      (std::string("reference_engine_") + testing::UnitTest::GetInstance()->current_test_info()->name());
  std::string file = (folder / "flows" / "river.hyd").string();
  FakeHost host;
};

TEST_F(HydroTest, FileBuildsSegmentsLinksAndBoundaries) {
  write({});
  host.load("NUMSEG 9\nNINQ 1 1\nNOQS 1 1 4\nNBRKQ 1 1 2\nHYDSKIPTIME 12 0 0");
  host.hydro_file_puts = 0;
  read_hyd_file(&FakeHost::callback);
  ASSERT_EQ(host.return_code, 0) << host.failures.back();
  EXPECT_EQ(host.number("NUMSEG"), 3);
  EXPECT_EQ(host.text("SEGNAME 2"), "lower");
  EXPECT_EQ(host.text("SEGNAME 3"), "pond");
  EXPECT_EQ(host.number("VOLUME 1"), 12960); // halfway from 86400 to 172800, in the data set's unit of 10 m3
  EXPECT_EQ(host.number("SEGLENGTH 1"), 1000);
  EXPECT_EQ(host.number("SEGLENGTH 2"), 0); // the fill value
  EXPECT_EQ(host.number("SEGWIDTH 2"), 30);
  EXPECT_EQ(host.number("NINQ 1"), 3);
  EXPECT_EQ(host.text("FLOWFUNCDESC 1 1"), "outside to upper");
  EXPECT_EQ(host.text("FLOWFUNCDESC 1 2"), "upper to lower");
  for (int k = 1; k <= 3; ++k) {
    const std::string pair = " 1 " + std::to_string(k) + " 1";
    EXPECT_EQ(host.number("NOQS 1 " + std::to_string(k)), 1);
    EXPECT_EQ(host.number("JQ" + pair), k - 1);
    EXPECT_EQ(host.number("IQ" + pair), k == 3 ? 0 : k);
    EXPECT_EQ(host.number("BQ" + pair), 1);
  }
  EXPECT_TRUE(host.bound_found);
  EXPECT_EQ(host.hydro_file_puts, 0);
}

// A small file that tells of more segments than memory holds.
TEST_F(HydroTest, FileThatTakesAllMemoryIsRefused) {
  int id = 0, shape[2], names = 0;
  ASSERT_EQ(nc_create(file.c_str(), NC_CLOBBER | NC_NETCDF4, &id), NC_NOERR);
  for (const char* name : {"time", "link", "name_length"}) nc_def_dim(id, name, 3, &shape[1]);
  nc_def_dim(id, "segment", std::size_t{1} << 33, &shape[0]);
  nc_def_var(id, "segment_name", NC_CHAR, 2, shape, &names);
  ASSERT_EQ(nc_close(id), NC_NOERR);
  ASSERT_LT(std::filesystem::file_size(file), 100'000u);
  read_hyd_file(&FakeHost::callback);
  EXPECT_EQ(refusal(), "is damaged: the NetCDF library fails on it.");
}

// Upper reach, day 0: V = V0 (1 + t), so that (1 + t) C' = -2 C and C(1) = C0 / 4; day 1: C' = -C / 2. The pond keeps
// its mass in half the water. Steps end where the flows change, whatever the data set's step.
TEST_F(HydroTest, RunTakesFlowsAndVolumesFromTheFile) {
  write({});
  read_hyd_file(&FakeHost::callback);
  host.load("INITC 1 1 8\nINITC 1 3 2\nNBRKQ 1 1 1\nNOQFUNC 1 1 1 0 77\nVOLUME 1 0");
  for (const auto& [change, error] :
       {std::pair("SOLUTIONTYPE 2\nDTFUNC 1 0 0.03", 1e-5), std::pair("SOLUTIONTYPE 3\nDTFUNC 1 0 0.7", 1e-4),
        std::pair("SOLUTIONTYPE 1\nDTFUNC 1 0 0.0001", 1e-3)}) {
    run(change);
    ASSERT_EQ(host.return_code, 0) << host.failures.back();
    EXPECT_NEAR(host.last_grid[0], 2 * std::exp(-0.5), error) << change;
    EXPECT_NEAR(host.last_grid[8], 4, 1e-6) << change;
    EXPECT_FLOAT_EQ(host.last_grid[3], 172800);
    EXPECT_FLOAT_EQ(host.last_grid[11], 50);
    // Lower reach: C(1) = integral of 8 (1 + s)^-2 e^(s - 1) = 2.2551, C(2) = C(1) / e + 4 (e^-0.5 - e^-1).
    EXPECT_THAT(host.infos[host.infos.size() - 3], HasSubstr("inflow 0, outflow 327.4"));
  }
}

// The pond halves on day 1 though no link leads to it; the other volumes follow from the flows to 0.9 %.
TEST_F(HydroTest, VolumeThatDoesNotFollowFromTheFlowsIsReportedOnce) {
  HydroContent content;
  content.values["volume"][3] = 172800 * 1.009;
  write(content);
  read_hyd_file(&FakeHost::callback);
  run();
  EXPECT_THAT(
      host.warnings,
      testing::ElementsAre(
          file +
          ": from 2000-01-12 00:00:00 to 2000-01-13 00:00:00 the volume of segment 3 (pond) goes from 100 to 50 m3, "
          "but its flows make it 100 m3. The difference is added or removed as pure water; later cases are "
          "not reported."));
  content.values["volume"][3] = 172800 * 1.02;
  write(content);
  run();
  EXPECT_THAT(host.warnings.back(), HasSubstr("the volume of segment 1 (upper) goes from 86400 to 176256 m3, but its "
                                              "flows make it 172800 m3."));
  EXPECT_EQ(host.warnings.size(), 2u);
}

TEST_F(HydroTest, FilesThatCannotServeAreRefused) {
  const auto without = [](const char* part) {
    HydroContent content;
    content.without = part;
    return content;
  };
  const auto with = [](const char* variable, std::size_t at, double value) {
    HydroContent content;
    content.values.at(variable)[at] = value;
    return content;
  };
  host.load("NUMSEG 3");
  run();
  EXPECT_EQ(refusal(), "flows\\river.hyd: no such hydrodynamic file. Correct the name in the data set's settings.");
  std::ofstream(file) << "no such thing";
  run();
  EXPECT_EQ(refusal(), "is not a NetCDF file.");
  EXPECT_EQ(refused(without("link")), "has no dimension \"link\".");
  EXPECT_EQ(refused(without("volume")), "has no variable \"volume\".");
  HydroContent turned;
  turned.shapes["flow"] = {"link", "time"};
  EXPECT_EQ(refused(turned), "the variable \"flow\" does not have the dimensions (time, link).");
  HydroContent undated;
  undated.units = "days\t" + std::string(40, '\xff');
  EXPECT_EQ(refused(undated), "the units of \"time\" are \"days" + std::string(36, '?') +
                                  "...\", not like \"days since 2007-10-01 00:00:00\".");
  EXPECT_EQ(refused(with("link_to", 1, 7)), "link 2 names segment 7, but the file has 3 segments.");
  EXPECT_EQ(refused(with("time", 2, 264)), "time 3 is not later than the time before it.");
  EXPECT_EQ(refused(with("time", 2, 276)), "covers 2000-01-11 00:00:00 to 2000-01-12 12:00:00, but the run needs "
                                           "2000-01-11 00:00:00 to 2000-01-13 00:00:00.");
  EXPECT_EQ(refused(with("volume", 4, 0)), "segment 2 (lower) has no volume at 2000-01-12 00:00:00.");
  EXPECT_EQ(refused(with("flow", 4, NC_FILL_DOUBLE)),
            "the flow of link 2 (upper to lower) at 2000-01-12 00:00:00 is missing.");
  EXPECT_EQ(refused(with("volume", 2, NC_FILL_DOUBLE)),
            "the volume of segment 3 (pond) at 2000-01-11 00:00:00 is missing.");
  host.load("HYDROFILE \"http://localhost/river.hyd\"");
  run();
  EXPECT_EQ(refusal(), "http://localhost/river.hyd: is a URL; a hydrodynamic file must be on this machine.");
  host.load("HYDROFILE \"flows\\river.hyd\"\nNUMSEG 4");
  EXPECT_EQ(refused({}), "has 3 segments, but the data set has 4.");
  host.load("HYDROTYPE 1");
  EXPECT_EQ(refused({}), "The hydrodynamic file type 1 is unknown; this engine reads type 0.");
}

// The NetCDF library reads zeros beyond the end: no flow on the last day.
TEST_F(HydroTest, AFileThatHasLostItsEndIsRefused) {
  HydroContent classic;
  classic.form = NC_64BIT_OFFSET;
  write(classic);
  const auto size = std::filesystem::file_size(file);
  std::filesystem::resize_file(file, size - 80);
  read_hyd_file(&FakeHost::callback);
  EXPECT_THAT(refusal(), testing::StartsWith("is cut: it has " + std::to_string(size - 80) + " of at least "));
}

// HDF5 itself would follow each of these and hand out what it finds, a user's private file for segment names. The other
// file is a pipe, at which a helper that opens it would wait for ever.
TEST_F(HydroTest, FilesThatTakeDataFromOtherFilesAreRefused) {
  const std::string other = (folder / "flows" / "other").string();
  ASSERT_EQ(mkfifo(other.c_str(), 0600), 0);
  const auto attacked = [&](const std::function<void(hid_t, hid_t)>& attack) {
    write({});
    const hid_t id = H5Fopen(file.c_str(), H5F_ACC_RDWR, H5P_DEFAULT), properties = H5Pcreate(H5P_DATASET_CREATE);
    H5Ldelete(id, "segment_name", H5P_DEFAULT);
    attack(id, properties);
    H5Pclose(properties);
    H5Fclose(id);
    read_hyd_file(&FakeHost::callback);
    return refusal();
  };
  const hsize_t shape[] = {3, 6};
  const hid_t space = H5Screate_simple(2, shape, nullptr);
  const auto make = [&](hid_t parent, const char* name, hid_t properties) {
    H5Dclose(H5Dcreate2(parent, name, H5T_NATIVE_CHAR, space, H5P_DEFAULT, properties, H5P_DEFAULT));
  };
  const std::string head = "takes data from another file, which is not read: ",
                    end = "; put all data into the one file.";
  EXPECT_EQ(attacked([&](hid_t id, hid_t properties) {
              H5Pset_external(properties, "/etc/passwd", 0, 18);
              make(id, "segment_name", properties);
            }),
            head + "\"segment_name\" has external storage" + end);
  EXPECT_EQ(attacked([&](hid_t id, hid_t properties) {
              H5Pset_virtual(properties, space, other.c_str(), "x", space);
              make(id, "segment_name", properties);
            }),
            head + "\"segment_name\" is a virtual data set" + end);
  EXPECT_EQ(attacked([&](hid_t id, hid_t) {
              H5Lcreate_external(other.c_str(), "/x", id, "segment_name", H5P_DEFAULT, H5P_DEFAULT);
            }),
            head + "\"segment_name\" is an external link" + end);
  EXPECT_EQ(attacked([&](hid_t id, hid_t) { // where the library would follow it, too
              const hid_t group = H5Gcreate2(id, "sub\x1b group", H5P_DEFAULT, H5P_DEFAULT, H5P_DEFAULT);
              H5Lcreate_external(other.c_str(), "/x", group, "x", H5P_DEFAULT, H5P_DEFAULT);
              H5Gclose(group);
            }),
            head + "\"sub? group/x\" is an external link" + end);
  H5Sclose(space);
}

} // namespace
