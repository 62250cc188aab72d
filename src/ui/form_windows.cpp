#include "ui/form_windows.h"

#include "app/forms.h"
#include "editors/copy_series_form.h"
#include "editors/select_segments_form.h"
#include "ui/about_box.h"
#include "ui/copy_series_dialog.h"
#include "ui/editor_window.h"
#include "ui/fields_dialog.h"
#include "ui/fill_calculate_dialog.h"
#include "ui/graph_window.h"
#include "ui/import_dialog.h"
#include "ui/kept_work_dialog.h"
#include "ui/network_window.h"
#include "ui/parameters_dialog.h"
#include "ui/preferences_dialog.h"
#include "ui/select_segments_dialog.h"

namespace vesk {

form_windows::window form_windows::make(form& wanted) {
  if (auto* editing = dynamic_cast<editor*>(&wanted)) {
    auto* dialog = new editor_window(&parent_, *editing);
    return {dialog, [dialog] { dialog->reload(); }};
  }
  if (auto* settings = dynamic_cast<TParametersForm*>(&wanted)) {
    auto* dialog = new parameters_dialog(&parent_, *settings);
    return {dialog, [dialog] { dialog->reload(); }, [dialog] { dialog->enable(); }};
  }
  if (auto* segments = dynamic_cast<TSelectSegmentsForm*>(&wanted)) {
    auto* dialog = new select_segments_dialog(&parent_, *segments);
    return {dialog, [dialog] { dialog->reload(); }};
  }
  if (auto* copies = dynamic_cast<TCopySeriesForm*>(&wanted)) {
    auto* dialog = new copy_series_dialog(&parent_, *copies);
    return {dialog, [dialog] { dialog->reload(); }};
  }
  if (auto* import = dynamic_cast<TImportTimeSeriesForm*>(&wanted)) {
    auto* dialog = new import_dialog(&parent_, *import);
    return {dialog, [dialog] { dialog->reload(); }};
  }
  if (auto* expression = dynamic_cast<TFillCalculateForm*>(&wanted))
    return {new fill_calculate_dialog(&parent_, *expression)};
  if (auto* times = dynamic_cast<TRegularTimesForm*>(&wanted))
    return {new fields_dialog(&parent_, *times, {}, times->entry_fields(), TRegularTimesForm::explanation,
                              [times] { return times->message(); })};
  if (auto* seed = dynamic_cast<TSetSeedDateForm*>(&wanted)) {
    entry_field* const fields[] = {&seed->StartDateField, &seed->StartTimeField};
    return {new fields_dialog(&parent_, *seed, TSetSeedDateForm::group_caption, fields, TSetSeedDateForm::explanation,
                              [seed] { return seed->message(); })};
  }
  if (auto* preferences = dynamic_cast<TPreferenceConfigurationForm*>(&wanted))
    return {new preferences_dialog(&parent_, *preferences)};
  if (auto* kept = dynamic_cast<TKeptWorkForm*>(&wanted)) return {new kept_work_dialog(&parent_, *kept)};
  if (const auto* about = dynamic_cast<TAboutBox*>(&wanted))
    return {new about_box(&parent_, about->edition_name, about->engine)};
  return {};
}

form_windows::window& form_windows::window_of(form& wanted) {
  const auto found = windows_.find(&wanted);
  return found != windows_.end() ? found->second : windows_.emplace(&wanted, make(wanted)).first->second;
}

bool form_windows::show(form& shown) {
  QDialog* dialog = window_of(shown).dialog;
  if (!dialog) return false;
  open_.push_back(&shown);
  if (network_ && open_editor() == &shown) network_->follow(dialog);
  const int result = dialog->exec();
  open_.pop_back();
  if (network_) network_->follow(open_editor() ? window_of(*open_editor()).dialog : nullptr);
  return result == QDialog::Accepted;
}

editor* form_windows::open_editor() const {
  return open_.empty() ? nullptr : dynamic_cast<editor*>(open_.back());
}

void form_windows::show_network(editor_host& host) {
  if (!network_)
    network_ = new network_window(&parent_, host, [this](std::size_t segment) {
      if (editor* front = open_editor(); front && front->is_about_segments()) front->go_to_segment(segment);
    });
  editor* front = open_editor();
  network_->follow(front ? window_of(*front).dialog : nullptr);
  network_->show();
  network_->raise();
  network_->activateWindow();
  if (front && front->segment_in_focus()) network_->select(front->segment_in_focus());
}

void form_windows::show_graph(std::shared_ptr<TGraphForm> graph, const form& owner) {
  const auto found = windows_.find(&owner);
  QWidget* beside = found != windows_.end() && found->second.dialog ? found->second.dialog : &parent_;
  (new graph_window(beside, std::move(graph)))->show();
}

void form_windows::tell(std::function<void()> window::*news) {
  for (auto& [shown_form, shown_window] : windows_)
    if (shown_window.dialog && shown_window.dialog->isVisible() && shown_window.*news) (shown_window.*news)();
}

void form_windows::data_set_replaced() {
  tell(&window::reload);
}

void form_windows::job_changed() {
  tell(&window::job_changed);
}

} // namespace vesk
