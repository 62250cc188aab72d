#include "app/main_form.h"
#include "behaviour_catalogue.h"
#include "documents/xml_documentation_index.h"
#include "noting_interface.h"
#include "temporary_folder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace vesk {
namespace {

using lines = std::vector<std::string>;

class Outside : public testing::Test {
protected:
  Outside() {
    form.document_index = std::make_unique<xml_documentation_index>();
    form.document_index->initialize();
    form.program_directory = form.documentation_directory = folder.path.string() + "/";
    form.start_outside_program = [this](const lines& arguments, const std::filesystem::path& in) {
      started = arguments;
      started.push_back("in " + in.string());
      return starts;
    };
    form.open_outside = [this](const std::string& what, const std::filesystem::path& in) {
      opened.push_back(what + " in " + in.string());
    };
  }
  ~Outside() override { form.document_index->terminate(); }

  // Fills the menu from an index with the given content after a grammar.
  void populate(const std::string& content) {
    folder.write("documentation.xml", "<!DOCTYPE index [<!ELEMENT index ANY><!ELEMENT group ANY><!ELEMENT document ANY>"
                                      "<!ATTLIST document file CDATA #IMPLIED name CDATA #IMPLIED>]>" +
                                          content);
    ui.documents.clear();
    ui.lines.clear();
    form.documentation_links.clear();
    form.populate_documentation_menu();
  }

  temporary_folder folder;
  noting_interface ui;
  TPreveskMainForm form{ui, folder.path / "settings.ini"};
  bool starts = true;
  lines started, opened;
};

TEST_F(Outside, TheDocumentsAreListedInTheirOrder) {
  populate("<index><document file='b.html' name='B &amp; b'><document file='a.html' name='\xc3\x84'/></document>"
           "<group>text<document file='see http://x.org' name='Twice'/></group>"
           "<document file='c.html' name='Twice'/></index>");
  EXPECT_EQ(ui.lines, lines{});
  EXPECT_EQ(ui.documents, (lines{"B & b", "\xc3\x84", "Twice", "Twice"}));
  EXPECT_EQ(form.documentation_links,
            (std::map<std::string, std::string>{{"B & b", "b.html"}, {"Twice", "c.html"}, {"\xc3\x84", "a.html"}}));
}

TEST_F(Outside, AnIndexThatCannotBeUsedEndsInOneLine) {
  const std::string secret = folder.file("secret");
  folder.write("secret", "told");
  struct {
    std::string content;
    const char* line; // or its beginning
    std::size_t entries;
  } const cases[] = {
      {"<index><document file='a' name='A'/><document name='B'/></index>",
       "0 Unable to populate document menunode 'document' missing attribute 'file'", 1},
      {"<index><document file='a'/></index>",
       "0 Unable to populate document menunode 'document' missing attribute 'name'", 0},
      {"<index><document file='' name='A'/></index>",
       "0 Unable to populate document menuattribute 'file' of node 'document' missing value", 0},
      {"<index><?document?></index>", "0 Unable to populate document menunode 'document' missing attribute 'file'", 0},
      {"<index><document file='a' name='A'/><other/></index>",
       "0 Caught exception populating document menu: no declaration found for element 'other'", 0},
      {"<index><document file='a' name='A'/>", "0 Caught exception populating document menu: ", 0},
      {"", "0 Caught exception populating document menu: ", 0},
  };
  for (const auto& c : cases) {
    populate(c.content);
    ASSERT_EQ(ui.lines.size(), 1U) << c.content;
    EXPECT_TRUE(ui.lines[0].starts_with(c.line)) << ui.lines[0];
    EXPECT_EQ(ui.documents.size(), c.entries) << c.content;
  }
  folder.write("documentation.xml",
               "<!DOCTYPE index [<!ELEMENT index ANY><!ENTITY e SYSTEM '" + secret + "'>]><index>&e;</index>");
  ui.lines.clear();
  form.populate_documentation_menu();
  EXPECT_EQ(ui.lines.size(), 1U); // nothing outside is read
  std::filesystem::remove(folder.path / "documentation.xml");
  ui.lines.clear();
  form.populate_documentation_menu();
  EXPECT_EQ(ui.lines, lines{"0 Caught exception populating document menu: Cannot open " +
                            folder.file("documentation.xml") + ": No such file or directory."});
}

TEST_F(Outside, TheShippedIndexNamesFilesThatAreThere) {
  int count = 0;
  const std::filesystem::path documents = DOCUMENTS;
  form.document_index->read(documents / "documentation.xml", [&](const std::string&, const std::string& file) {
    EXPECT_TRUE(std::filesystem::exists(documents / file)) << file;
    ++count;
  });
  EXPECT_GE(count, 2);
}

TEST_F(Outside, ADocumentOpensFromItsFolderAndALinkUnchanged) {
  const std::string in = " in " + folder.path.string() + "/";
  form.documentation_links = {
      {"file", "sub/a.html"}, {"link", "https://y?a=http://b"}, {"big", "HTTP://y"}, {"mixed", "Http://y"}};
  for (const char* caption : {"file", "link", "big", "mixed", "unknown"}) form.DocumentationItemClick(caption);
  form.ContentsItemClick();
  form.has_browser = [] { return false; };
  form.ContentsItemClick(); // this front end has no window for it either
  EXPECT_EQ(opened.back(), folder.file("user-guide.html") + in);
  opened.pop_back();
  EXPECT_EQ(opened, (lines{folder.file("sub/a.html") + in, "https://y?a=http://b" + in, "HTTP://y" + in,
                           folder.path.string() + "/Http://y" + in, folder.file("user-guide.html") + in}));
}

TEST_F(Outside, ADocumentWithAnotherSchemeOrOutsideItsFolderIsNotOpened) {
  for (const char* text : {"file:///etc/passwd?http://", "x https://y", "javascript:http://y", "../secret.desktop",
                           "a/../../secret", "..\\..\\secret", "a\\..\\..\\secret"}) {
    form.documentation_links = {{"it", text}};
    form.DocumentationItemClick("it");
    ASSERT_FALSE(ui.lines.empty()) << text;
    EXPECT_EQ(ui.lines.back(), "2 Cannot open \"" + std::string(text) +
                                   "\": a document is a file in the documentation folder, or an http or https link.");
  }
  EXPECT_EQ(opened, lines{});
}

TEST_F(Outside, PostProcessorsGetTheDataFileAsOneArgument) {
  form.LoadPostProcessorItemClick();
  EXPECT_EQ(started, (lines{"jovik.exe", "in "}));
  form.file_name = "/my rivers/a.vki";
  form.settings.HavlePostProcessor = "\"/opt/my havle\" -x";
  form.HAVLEPostProcessorToolButtonClick();
  EXPECT_EQ(started, (lines{"/opt/my havle", "-x", "/my rivers/a.vki", "in "}));
  EXPECT_EQ(ui.boxes, lines{});
  starts = false;
  form.LoadPostProcessorItemClick();
  form.HAVLEPostProcessorToolButtonClick();
  EXPECT_EQ(ui.boxes, lines(2, "Error: Could not create post-processor process."));
  const std::string settings = " in " + folder.file("settings.ini") + ".";
  EXPECT_EQ(ui.lines,
            (lines{"2 Cannot start \"jovik.exe\". Name the post-processor in the setting PostProcessor" + settings,
                   "2 Cannot start \"/opt/my havle\". Name the post-processor in the setting HavlePostProcessor" +
                       settings}));
}

// A folder that others may write to can have a link under the name of the file that the updater's check creates.
TEST_F(Outside, TheUpdatersCheckFollowsNoLink) {
  for (const char* what : {"diary", "missing"}) {
    folder.write("diary", "kept");
    std::filesystem::create_symlink(folder.path / what, folder.path / "vesk.testcreate");
    form.Checkforupdates1Click();
    EXPECT_EQ(ui.take_boxes().at(0).substr(0, 23), "Check for updates now?:");
    EXPECT_EQ(folder.read("diary"), "kept");
    EXPECT_FALSE(std::filesystem::exists(folder.path / "missing"));
  }
}

TEST_F(Outside, TheUpdaterIsStartedOnceAgreedAndEndsTheProgram) {
  const std::string question = "Check for updates now?: This action will terminate vesk. All related programs \r\n"
                               "must be shut down for the update to succeed. Are you \r\nsure that you wish to do this "
                               "now?";
  form.Checkforupdates1Click();
  EXPECT_EQ(ui.take_boxes(), lines{question});
  EXPECT_TRUE(started.empty());
  EXPECT_FALSE(std::filesystem::exists(folder.path / "vesk.testcreate"));
  ui.answer = box_answer::yes;
  starts = false;
  form.Checkforupdates1Click();
  EXPECT_EQ(ui.take_boxes(), (lines{question, "Error: Failed to launch " + folder.file("orlupdate.exe") + " -i"}));
  EXPECT_FALSE(ui.closed);
  starts = true;
  form.Checkforupdates1Click();
  EXPECT_EQ(started, (lines{folder.file("orlupdate.exe"), "-i", "in " + folder.path.string() + "/"}));
  EXPECT_TRUE(ui.closed);
  ui.take_boxes();
  std::filesystem::create_directory(folder.path / "vesk.testcreate"); // so that the probe cannot be made
  form.Checkforupdates1Click();
  EXPECT_EQ(ui.boxes, lines{"Insufficient permission: You do not have adequate permission to update this installation. "
                            "\r\nPlease contact your computer system administrator. \r\nYou must have write access in "
                            "the program directory \r\n" +
                            folder.path.string() + "/"});
  EXPECT_TRUE(std::filesystem::exists(folder.path / "vesk.testcreate"));
}

TEST_F(Outside, TheDatabaseFolderIsChosenAndLookedAt) {
  form.set_database_folder("/nowhere/");
  form.Setdatabasefolder1Click(); // cancelled, and looked at all the same
  EXPECT_EQ(ui.asked_from, "/nowhere/");
  EXPECT_EQ(ui.take_boxes(),
            (lines{"Cannot locate database: Unable to find ORLVesk database in folder\r\n/nowhere/\r\n"
                   "You must now select the correct database directory\r\n",
                   "Failed to locate database: Failed to find ORLVesk database in folder\r\n/nowhere/.\r\n"
                   "Some program functions may not operate properly until\r\n"
                   "you use the 'set database directory' option on the File\r\n"
                   "menu to set the database directory\r\n"}));
  write_behaviour_catalogue(folder.path);
  ui.folder = folder.path.string();
  form.Setdatabasefolder1Click();
  EXPECT_EQ(ui.boxes, lines{});
  EXPECT_EQ(form.settings.DatabaseDir, folder.path.string() + "/");

  // The data set that is open takes the catalogue that can be read; its lists stay.
  form.new_data_set();
  form.current_data_set->systems.edit(0).description = "kept";
  const auto first = form.current_data_set->catalogue();
  ui.folder = "/";
  form.select_database_folder();
  EXPECT_EQ(form.settings.DatabaseDir, "/");
  EXPECT_EQ(form.current_data_set->catalogue(), first);
  const temporary_folder other;
  write_behaviour_catalogue(other.path);
  ui.folder = other.path.string();
  form.Setdatabasefolder1Click();
  EXPECT_NE(form.current_data_set->catalogue(), first);
  EXPECT_EQ(form.current_data_set->catalogue(), form.catalogue.get());
  EXPECT_EQ(form.backup_data_set->catalogue(), form.catalogue.get());
  EXPECT_EQ(form.current_data_set->systems[0].description, "kept");
  std::filesystem::last_write_time(other.path / "catalogue.sqlite", std::filesystem::file_time_type::clock::now());
  form.ParameterizationItemClick(); // the tables have changed
  EXPECT_EQ(form.current_data_set->catalogue(), form.catalogue.get());
}

} // namespace
} // namespace vesk
