#include "noting_job.h"
#include "shell/keywords/dictionary.h"
#include "temporary_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>

namespace vesk {
namespace {

TEST(KeywordTable, FindsEachKeywordInByteOrderAndNothingElse) {
  const shell_interface shell;
  for (std::size_t i = 0; i < keyword_count; ++i) {
    std::size_t position = keyword_count;
    EXPECT_TRUE(shell.find_function(shell.functions[i].keyword, position));
    EXPECT_EQ(position, i);
    if (i > 0) {
      EXPECT_LT(shell.functions[i - 1].keyword, shell.functions[i].keyword);
    }
  }
  std::size_t position = 0;
  for (const char* name : {"", "numseg", "NUMSEGS", "NUMSE", "CSVOPDESCRIPTIONS", "EXCHANGEFUNCDESCX"})
    EXPECT_FALSE(shell.find_function(name, position)) << name;
  EXPECT_FALSE(shell.find_function({"NUMSEG\0", 7}, position)); // as many bytes as were given
}

TEST(KeywordTable, HasTheKnownNumbersOfKeywordsOfEachMode) {
  const auto count = [](keyword_modes modes) {
    return std::count_if(keyword_table.begin(), keyword_table.end(),
                         [&](const auto& row) { return row.modes == modes; });
  };
  EXPECT_EQ(count(put), 23);
  EXPECT_EQ(count(get), 29);
  EXPECT_EQ(count(get_put), 105);
}

// In the mode that a keyword does not serve it says so, and leaves the arguments as they are.
TEST(KeywordTable, OneWayKeywordsRefuseTheOtherWay) {
  const exchange refusals[] = {
      {"PNUMCONST 9", "You can not change the number of constants this way."},
      {"PNUMTF 9", "You can not change the number of time functions this way."},
      {"PNOPAM 1 9", "You cannot change the number of parameters this way."},
      {"PNUMOP 9", "You can not change the number of output parameters this way."},
      {"PNUMCSVOP 9", "You can not change the number of csv output parameters this way."},
      {"PNUMSYS 9", "You can not change the number of systems."},
      {"PNUMPROJECTFILES 9", "You can only GET the number of project files."},
      {"PCONSTISC 1 9", "You cannot change the isc number of a constant"},
      {"PTFISC 1 9", "You cannot change the isc number of a time function"},
      {"POPISC 1 9", "You cannot change the isc number of an output parameter"},
      {"PCSVOPISC 1 9", "You cannot change the isc number of an output parameter"},
      {"PISCPARAM 1 1 9", "You cannot change the isc number of a parameter"},
      {"PTFDESC 1 'x'", "You cannot change the description of a time function"},
      {"PCONSTDESC 1 'x'", "You cannot change the description of a constant"},
      {"PCONSTGROUPDESC 1 'x'", "You cannot change the description of a constant group"},
      {"PDESCPARAM 1 'x'", "You cannot change the description of a parameter"},
      {"PSYSNAME 1 'x'", "You can only GET the system name"},
      {"PPROJECTFILE 1 'x'", "You can only GET a project file."},
      {"PHYDSKIPJULIAN 9.", "You can only GET a Hydro-Skip Julian."},
      {"GMAXSEG 9", "You can only PUT a maximum number of segments."},
      {"GMAXTRANFUNC 9", "You can only PUT a maximum number of exchange/flow functions."},
      {"GMAXBREAK 9", "You can only PUT a maximum number of time breaks."},
      {"GMAXBOUND 9", "You can only PUT a maximum number of boundaries."},
      {"GMAXLOAD 9", "You can only PUT a maximum number of loads."},
      {"GALLTFDATA 9.", "You can only PUT a time function data pointer."},
      {"GALLBCDATA 9.", "You can only PUT a bouncary condition data pointer."},
      {"GALLLOADDATA 9.", "You can only PUT a load data pointer."},
      {"GALLFLOWDATA 9.", "You can only PUT a flow data pointer."},
      {"GALLEXCHANGEDATA 9.", "You can only PUT an exchange data pointer."},
      {"GPRINTTIMEFUNC 9.", "You can only PUT a print interval pointer."},
      {"GDAYS 9.", "You can only PUT a days update."},
      {"GFINDBOUND", "You can not find boundaries during a get."},
      {"GINFO 'x'", "You can only PUT status information."},
      {"GICONINFO 1 'x'", "You can only PUT icon status information."},
      {"GCLEARINFO", "You can only PUT status information."},
      {"GPROGRESS 9", "You can only PUT progress information."},
      {"GSTATUS 'x' 9", "You can only PUT status information."},
      {"GGRIDINIT 'x' 1 1 1", "You can only PUT grid initializtion information."},
      {"GGRIDDATA 1. 1 1 1", "You can only PUT grid data."},
      {"GGRIDUPDATE", "You can only PUT grid update."},
      {"GDONE", "You can only PUT grid stop."},
      {"PCANCEL 9", "You can only GET a cancel flag."},
      {"PELAPSED 9", "You can only GET the elapsed time."},
      {"PWINHANDLE 9", "You can only GET a window handle."},
      {"GRETURNCODE 9", "You can only SET a return code."},
      {"PSPRINTFI 'x' '%d' 1", "You can only GET a string."},
      {"PSPRINTFR 'x' '%g' 1.", "You can only GET a string."},
      {"PSPRINTFII 'x' '%d' 1 1", "You can only GET a string."},
      {"PSPRINTFRR 'x' '%g' 1. 1.", "You can only GET a string."},
      {"PSPRINTFIR 'x' '%d' 1 1.", "You can only GET a string."},
      {"PSPRINTFRI 'x' '%g' 1. 1", "You can only GET a string."},
  };
  noting_job job;
  const engine_job_scope serving(job);
  const prevesk_dataset_data_type before = job.data;
  for (const exchange& refusal : refusals) {
    const std::string arguments = std::string(refusal.call).substr(std::strcspn(refusal.call, " "));
    const std::string untouched = call("Gnothing" + arguments);
    job.take_log();
    EXPECT_EQ(call(refusal.call), untouched);
    EXPECT_EQ(job.take_log(), std::vector<std::string>{std::string("WARNING: ") + refusal.answer}) << refusal.call;
  }
  EXPECT_EQ(call("PIMPORT 9"), "9"); // the one that stays silent
  EXPECT_EQ(job.take_log(), std::vector<std::string>());
  EXPECT_EQ(std::size(refusals) + 1, 52u);
  EXPECT_EQ(job.data, before);
  EXPECT_EQ(job.notes, std::vector<std::string>());
}

TEST(KeywordTable, DictionaryShowsTheRowsInByteOrder) {
  const temporary_folder folder;
  ASSERT_TRUE(write_dictionary_file(folder.file("dictionary.txt")));
  const std::string text = folder.read("dictionary.txt");
  EXPECT_TRUE(text.starts_with("\nALLBCDATA\n\tDATAFUNC1\n\tall_boundary_condition_data\n\t\tvalue array :  (REAL)\n\n"
                               "ALLBOUNDFUNC\n\tDATAFUNC4\n\tall_system_boundary_tv_pairs\n"
                               "\t\tsystem_index :  (INTEGER)\n\t\tboundary_function_index :  (INTEGER)\n"
                               "\t\tdays :  (REAL)\n\t\tvalue :  (REAL)\n\nALLBRKTF\n"));
  EXPECT_NE(text.find("\nNUMSEG\n\tDATAFUNC1\n\tnumber_of_segments\n\t\tnumseg :  (INTEGER)\n"), std::string::npos);
  EXPECT_NE(text.find("\nDONE\n\tDATAFUNC0\n\tgrid_stop\n\nDTFUNC\n"), std::string::npos);
  EXPECT_NE(text.find("\n\t\tconstant_description :  (STRING)\n"), std::string::npos);
  EXPECT_FALSE(write_dictionary_file(folder.file("nowhere/dictionary.txt")));
  EXPECT_THROW(write_dictionary_file("/dev/full"), file_exception);
}

// The table in the document for engine authors has each row once, and no other.
TEST(KeywordTable, TheDocumentHoldsTheTable) {
  std::ifstream document(ENGINE_DOCUMENT);
  std::vector<std::string> found, expected;
  for (std::string line; std::getline(document, line);)
    if (line.starts_with("| `")) found.push_back(line);
  for (const keyword_row& row : keyword_table) {
    std::string line = "| `" + std::string(row.keyword) + "` | " + std::string(row.description) + " | ";
    for (std::size_t i = 0; i < row.variables.size(); ++i)
      line += (i ? "; " : "") + std::string(row.variables[i].name) + " (" + "IRS"[row.variables[i].type] + ")";
    expected.push_back(line + (row.modes == get ? " | GET |" : row.modes == put ? " | PUT |" : " | GET, PUT |"));
  }
  std::sort(found.begin(), found.end());
  std::sort(expected.begin(), expected.end());
  std::vector<std::string> different; // in one of the two only
  std::set_symmetric_difference(found.begin(), found.end(), expected.begin(), expected.end(),
                                std::back_inserter(different));
  EXPECT_EQ(different, std::vector<std::string>());
}

} // namespace
} // namespace vesk
