#include "editors/parameters_form.h"

#include "editing_host.h"
#include "editors/set_seed_date_form.h"
#include "memory_catalogue_store.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vesk {
namespace {

using testing::ElementsAre;

constexpr double start = 41183, end = 41548; // 1 October 2012 and a year later

struct ParametersForm : testing::Test {
  ParametersForm() {
    memory_catalogue_store store = small_catalogue();
    host.data = prevesk_dataset_data_type(read_catalogue(store));
    host.data.seed_date = start;
    host.data.seed_time = 0.12345678; // more digits than the field shows
    host.data.end_date = end;
    host.data.end_time = 0;
    host.data.comments = "first\r\nsecond";
    host.open = &form;
    form.FormShow();
  }
  ~ParametersForm() override { moment_type::moment_seed_is_set = false; }

  editing_host host;
  TParametersForm form{host};
};

TEST_F(ParametersForm, OpeningAndOkChangeNothingButTheMappedOptions) {
  host.data.restart_option = 7;
  host.data.vesk_to_vesk_linkage_option = 3;
  host.data.flow_option = 9;
  host.data.max_dt = 0.123456789;
  form.FormShow();
  EXPECT_EQ(form.restart_option, TParametersForm::neither_restart_button);
  prevesk_dataset_data_type expected = host.data;
  expected.restart_option = 2;
  expected.vesk_to_vesk_linkage_option = 0;
  expected.flow_option = 3;
  expected.solution_type = static_cast<std::uint32_t>(expected.solution_techniques[0].id);
  EXPECT_TRUE(form.FormCloseQuery(true));
  EXPECT_EQ(host.data, expected);
}

TEST_F(ParametersForm, WritesBackWhatWasEntered) {
  EXPECT_EQ(form.StartDateField.text(), "10/01/2012");
  form.DatasetNameEdit = "Oak City";
  form.CommentsMemo = "first\nnew";
  form.comments_edited();
  EXPECT_TRUE(form.StartDateField.enter("2012-10-02"));
  form.StartDateFieldChange();
  EXPECT_EQ(form.HydroSkipDateField.value(), start + 1);
  form.StartTimeFieldChange();
  EXPECT_EQ(form.HydroSkipTimeField.value(), 0.12345678); // the value, not the text
  form.flow_option = TParametersForm::kinematic_wave;
  form.SolutionTypeComboBox = 1;
  EXPECT_FALSE(form.MaxTimeStepField.enter("10.5"));
  EXPECT_FALSE(form.FormCloseQuery(true));
  EXPECT_EQ(form.message(), "Largest time step (days): the number has more than 1 digit before the point.");
  EXPECT_TRUE(form.MaxTimeStepField.enter("0.25"));
  EXPECT_FALSE(form.StartTimeField.enter("noon"));
  EXPECT_TRUE(form.StartTimeField.enter("02:57:47")); // the text shown
  EXPECT_EQ(form.StartTimeField.value(), 0.12345678);
  EXPECT_TRUE(form.FormCloseQuery(true));
  EXPECT_EQ(host.data.description, "Oak City");
  EXPECT_EQ(host.data.comments, "first\r\nnew");
  EXPECT_EQ(host.data.seed_date, start + 1);
  EXPECT_EQ(host.data.max_dt, 0.25);
  EXPECT_EQ(host.data.flow_option, 4U);
  EXPECT_EQ(host.data.solution_type, 2U);
  EXPECT_EQ(moment_type().date, date_time_origin + static_cast<std::int32_t>(start) + 1); // the seed
}

// A look at the settings before the period is entered has added them; they would refuse OK in their windows.
TEST_F(ParametersForm, UntouchedDefaultPointsMoveWithThePeriod) {
  host.data.apply_seed();
  host.data.give_default_points();
  exchange_function_data_type typed;
  typed.points = host.data.print_intervals.points;
  typed.points.edit(1).value = 1;
  host.data.exchange_fields.edit(0).functions.push_back(typed);
  host.data.time_steps.points = host.data.print_intervals.points;
  const prevesk_dataset_data_type before = host.data;
  form.FormShow();
  EXPECT_TRUE(form.StartTimeField.enter("0:00"));
  EXPECT_TRUE(form.EndDateField.enter("2013-01-01"));
  EXPECT_TRUE(form.FormCloseQuery(true));
  const auto day = [](double date) { return date_time_origin + static_cast<std::int32_t>(date); };
  EXPECT_EQ(host.data.print_intervals.points, (point_list{{{day(start), 0}, 0}, {{day(end) - 273, 0}, 0}}));
  EXPECT_EQ(host.data.exchange_fields, before.exchange_fields);
  EXPECT_EQ(host.data.time_steps, before.time_steps);
}

TEST_F(ParametersForm, AnotherModelDropsWhatBelongedToTheFirst) {
  EXPECT_THAT(form.model_names, ElementsAre("River", "Lake"));
  EXPECT_EQ(form.ModelTypeComboBox, 0);
  EXPECT_EQ(form.message(), "");
  const std::size_t systems = host.data.systems.size();
  form.ModelTypeComboBox = 1;
  EXPECT_EQ(form.message().substr(0, 54),
            "OK drops the data of the present model: " + std::to_string(systems) + " systems, 0 l");
  EXPECT_TRUE(form.FormCloseQuery(true));
  EXPECT_EQ(host.data.model_type, 3U);
  EXPECT_TRUE(host.data.systems.empty());
}

TEST_F(ParametersForm, AsksWhetherToReadTheHydrodynamicFile) {
  form.flow_option = TParametersForm::hydrodynamic_linkage;
  host.file = "river.hyd";
  host.answer = box_answer::cancel;
  form.BrowseHydButtonClick();
  EXPECT_EQ(form.HydrodynamicLinkageFileEdit, "");
  host.answer = box_answer::yes;
  form.BrowseHydButtonClick();
  EXPECT_EQ(host.data.hydrodynamic_file, "river.hyd"); // at once
  host.answer = box_answer::no;
  form.BrowseHydButtonClick(); // the last answer counts
  EXPECT_TRUE(form.FormCloseQuery(true));
  EXPECT_FALSE(form.reads_hydrodynamic_file());
  host.answer = box_answer::yes;
  form.BrowseHydButtonClick();
  EXPECT_TRUE(form.FormCloseQuery(true));
  EXPECT_TRUE(form.reads_hydrodynamic_file());
  host.replaced_while_asking = true;
  host.file = "other.hyd";
  host.boxes.clear();
  form.BrowseHydButtonClick();
  EXPECT_TRUE(host.boxes.empty());
  EXPECT_EQ(host.data.hydrodynamic_file, "river.hyd");
}

TEST_F(ParametersForm, ALoadedRestartFileKeepsWhatTheUserHasTouched) {
  form.EndDateField.enter("2013-01-01");
  form.StartTimeField.enter("6:00");
  form.StartTimeFieldChange();
  form.NpsFileNameEdit = "sewers.nps";
  form.LoadRestartFileButtonClick();
  EXPECT_FALSE(form.enabled().ok);
  EXPECT_FALSE(form.FormCloseQuery(true));
  host.running = false;
  host.data.seed_date = host.data.skip_date = start + 30;
  host.data.skip_time = 0.5;
  host.data.model_type = 3; // changes everything that belongs to a model
  host.data.refresh_from_catalogue(false);
  host.data.flow_option = 4;
  host.data.comments = "from the restart file";
  const std::string model = host.data.model_name;
  form.data_set_replaced();
  EXPECT_EQ(form.StartDateField.text(), "10/31/2012");
  EXPECT_EQ(form.EndDateField.text(), "01/01/2013");
  EXPECT_EQ(form.HydroSkipTimeField.text(), "06:00"); // follows the start entered by the user
  EXPECT_EQ(form.message(), "The restart file has been processed. See the result in the messages of the main window. "
                            "Your entries were kept.");
  EXPECT_TRUE(form.FormCloseQuery(true));
  EXPECT_EQ(host.data.model_name, model);
  EXPECT_EQ(host.data.flow_option, 4U);
  EXPECT_EQ(host.data.comments, "from the restart file");
  EXPECT_EQ(host.data.nps_file, "sewers.nps");
}

TEST_F(ParametersForm, CancelFirstCancelsTheRestartFileThatIsBeingLoaded) {
  form.LoadRestartFileButtonClick();
  EXPECT_EQ(form.message(), "The restart file is being loaded.");
  EXPECT_FALSE(form.FormCloseQuery(false));
  EXPECT_FALSE(host.running);
  EXPECT_TRUE(form.FormCloseQuery(false));
}

TEST_F(ParametersForm, OfTwoModelsWithOneNameTheFirstIsTaken) {
  memory_catalogue_store store = small_catalogue();
  auto tables = std::make_shared<model_catalogue>(*read_catalogue(store));
  tables->models[1].model_name = tables->models[0].model_name;
  host.data.set_catalogue(tables);
  host.data.model_type = tables->models[1].model_id;
  form.FormShow();
  EXPECT_EQ(form.ModelTypeComboBox, 1);
  EXPECT_EQ(form.message().substr(0, 8), "OK drops");
  EXPECT_TRUE(form.FormCloseQuery(true));
  EXPECT_EQ(host.data.model_type, tables->models[0].model_id);
}

TEST_F(ParametersForm, TheSeedDateIsStoredOnOk) {
  TSetSeedDateForm seed(host);
  seed.FormShow();
  seed.StartDateField.enter("1/1/1990");
  EXPECT_TRUE(seed.FormCloseQuery(false));
  EXPECT_EQ(host.data.seed_date, start);
  EXPECT_TRUE(seed.FormCloseQuery(true));
  EXPECT_EQ(host.data.seed_date, 32874);
  EXPECT_EQ(host.data.seed_time, 0.12345678);
}

} // namespace
} // namespace vesk
