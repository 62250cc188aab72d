#include "app/configuration.h"
#include "temporary_folder.h"

#include <gtest/gtest.h>

#include <tuple>

namespace vesk {
namespace {

// A fresh store after the first exit. The database folder is the default one, so it has no path.
const char* const all_defaults = R"([SOFTWARE\TALMO\VESK\7.0]
ApplicationName=TALMO VESK
EditionName=
PostProcessor=jovik.exe
HavlePostProcessor=havle.exe
ExpertStyle=0
ResultsTableHeight=0
MainFormLeft=0
MainFormTop=0
MainFormWidth=0
MainFormHeight=0
MainFormWindowState=0
RunTimeGridAlwaysVisible=0
EditProjectBasicNumericField=#######.###
BoundarySystemNumericField=EEEEEEE.EEEEEEE
ConstantsBasicNumericField=#######.####
ExchangeFlowFieldNumericField=EEEEEEE.EEEEEEE
ExchangeFlowPairNumericField=EEEEEEE.EEEEEEE
LoadsSystemNumericField=EEEEEEE.EEEEEEE
MainFormResultsNumericField=############.######
ParameterBasicNumericField=#######.####
PrintIntervalBasicNumericField=#######.##
SegmentsBasicNumericField=#######.####
SegmentsInitialConcentrationsNumericField=#######.####
SegmentsFractionDissolvedNumericField=#######.####
SysParamsBasicNumericField=#######.####
TimeStepBasicNumericField=####.####
BoundaryTimeFunctionValueSimpleField=E
ConstantsBasicSimpleField=E
ExchangeFlowTimeFunctionValueSimpleField=E
LoadsTimeFunctionValueSimpleField=E
SegmentsBasicValueSimpleField=E
SegmentsInitSimpleField=E
SegmentsParametersSimpleField=E
TimeFunctionsBasicSimpleField=E
SegmentsVolumeConversionFactorPictureField=EEEEEEE.EEEEEEE
SegmentsVolumeScaleFactorPictureField=EEEEEEE.EEEEEEE
DatabaseDir=
)";

class Configuration : public testing::Test {
protected:
  configuration read(const std::string& values) const {
    folder.write("a.ini", "[SOFTWARE\\TALMO\\VESK\\7.0]\n" + values);
    return configuration(folder.path / "a.ini");
  }
  temporary_folder folder;
};

TEST_F(Configuration, TheFirstExitWritesAllValuesInTheirOrder) {
  configuration fresh(folder.path / "a.ini");
  EXPECT_EQ(fresh.DatabaseDir, (std::filesystem::read_symlink("/proc/self/exe").parent_path() / "database/").string());
  fresh.save_all();
  EXPECT_EQ(folder.read("a.ini"), all_defaults);
}

// A path that nobody chose would be wrong once the programs were moved.
TEST_F(Configuration, TheDefaultDatabaseFolderIsStoredAsAnEmptyText) {
  const std::string default_folder = configuration(folder.path / "none.ini").DatabaseDir;
  for (const auto& [stored, chosen, stored_then] :
       {std::tuple(std::string("/rivers/"), default_folder, std::string()),
        {"", "/rivers/", "/rivers/"},
        {default_folder, default_folder, ""}}) { // as earlier versions stored it unasked
    configuration settings = read("DatabaseDir=" + stored + "\n");
    EXPECT_EQ(settings.DatabaseDir, stored.empty() ? default_folder : stored);
    settings.DatabaseDir = chosen;
    settings.save_all();
    EXPECT_EQ(folder.read("a.ini").find("\nDatabaseDir=" + stored_then + "\n") != std::string::npos, true) << stored;
  }
}

TEST_F(Configuration, TwoProgramsAtOnceEachSaveWhatTheyChanged) {
  configuration first = read("MainFormLeft=1\nMainFormTop=1\nPostProcessor=by hand\n"), second = first;
  first.MainFormLeft = 2;
  first.DatabaseDir = "/rivers/";
  first.save_all();
  second.MainFormTop = 3;
  second.save_all();
  first.save_all(); // again, as at the very end: it has nothing new
  const configuration stored(folder.path / "a.ini");
  EXPECT_EQ(stored.MainFormLeft, 2);
  EXPECT_EQ(stored.MainFormTop, 3);
  EXPECT_EQ(stored.DatabaseDir, "/rivers/");
  EXPECT_EQ(stored.PostProcessor, "by hand");
}

TEST_F(Configuration, SomeValuesAreStoredOnlyAfterAChange) {
  configuration settings = read("UndoMegabytes=7\n"), other = settings;
  settings.WrapMessages = true;
  settings.ShowResultsAfterRun = false;
  settings.save_all();
  settings.ShowResultsAfterRun = true;
  settings.save_all();
  other.UndoMegabytes = 8;
  other.save_all();
  const configuration stored(folder.path / "a.ini");
  EXPECT_TRUE(stored.WrapMessages);
  EXPECT_TRUE(stored.ShowResultsAfterRun);
  EXPECT_EQ(stored.UndoMegabytes, 8);
}

TEST_F(Configuration, RecentFilesOfTwoWindowsAreMerged) {
  folder.write("a.ini",
               "[SOFTWARE\\TALMO\\VESK\\7.0]\nRecentFile1=/old.vki\nRecentFile2=/gone.vki\nRecentFile4=/old.vki\n");
  configuration one(folder.path / "a.ini"), two(folder.path / "a.ini");
  EXPECT_EQ(one.recent_files(), (std::vector<std::string>{"/old.vki", "/gone.vki"}));
  one.add_recent_file("/b.vki");
  one.add_recent_file("/a.vki");
  one.add_recent_file("/b.vki");
  one.remove_recent_file("/gone.vki");
  EXPECT_EQ(one.recent_files(), (std::vector<std::string>{"/b.vki", "/a.vki", "/old.vki"}));
  two.add_recent_file("/c.vki");
  two.add_recent_file("/with a line\nfeed.vki");
  two.save_all();
  one.save_all();
  EXPECT_EQ(configuration(folder.path / "a.ini").recent_files(),
            (std::vector<std::string>{"/b.vki", "/a.vki", "/c.vki", "/old.vki"}));
  for (int i = 0; i < 20; ++i) one.add_recent_file("/" + std::to_string(i));
  EXPECT_EQ(one.recent_files().size(), 9U);
  one.clear_recent_files();
  one.save_all();
  EXPECT_TRUE(configuration(folder.path / "a.ini").recent_files().empty());
}

TEST_F(Configuration, TextsAreConverted) {
  const configuration read_in = read("ExpertStyle=abc\nRunTimeGridAlwaysVisible=-2x\nMainFormLeft=12.7\n"
                                     "MainFormTop=-4\nMainFormWidth=99999999999999\nMainFormHeight=\nEditionName=\n"
                                     "ApplicationName= Blank \nAdministrationMode=1\nPostProcessor=" +
                                     std::string(2000, 'p') + "\n");
  EXPECT_FALSE(read_in.ExpertStyle);
  EXPECT_TRUE(read_in.RunTimeGridAlwaysVisible);
  EXPECT_EQ(read_in.MainFormLeft, 12);
  EXPECT_EQ(read_in.MainFormTop, -4);
  EXPECT_EQ(read_in.MainFormWidth, 2147483647);
  EXPECT_EQ(read_in.MainFormHeight, 0);
  EXPECT_EQ(read_in.ApplicationName, " Blank ");
  EXPECT_EQ(read_in.PostProcessor, "jovik.exe"); // what is stored is too long
  EXPECT_TRUE(read_in.administration_mode());
}

TEST_F(Configuration, ChangesComeBackUnknownKeysSurviveAndTheAdministrationFlagIsNotWritten) {
  configuration settings = read("Unknown=#1\nLoadsSystemNumericField=##\n");
  settings.MainFormLeft = -7;
  settings.ExpertStyle = true;
  settings.HavlePostProcessor = "/opt/my havle --fast";
  settings.save_all();
  const configuration again(folder.path / "a.ini");
  EXPECT_EQ(again.MainFormLeft, -7);
  EXPECT_TRUE(again.ExpertStyle);
  EXPECT_EQ(again.HavlePostProcessor, "/opt/my havle --fast");
  EXPECT_EQ(again.LoadsSystemNumericField, "##");
  EXPECT_FALSE(again.administration_mode());
  const std::string text = folder.read("a.ini");
  EXPECT_NE(text.find("\nUnknown=#1\n"), std::string::npos);
  EXPECT_EQ(text.find("AdministrationMode"), std::string::npos);
}

TEST_F(Configuration, OneThatIsOnlyReadIsNeverWritten) {
  configuration(folder.path / "a.ini", configuration::access::read_only).save_all();
  EXPECT_FALSE(std::filesystem::exists(folder.path / "a.ini"));
}

} // namespace
} // namespace vesk
