// A catalogue of any content is refused in one sentence, or data sets can be made from each of its models.
#include "dataset/dataset.h"
#include "query/sqlite_catalogue_store.h"
#include "support/scratch.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace vesk;
  static const fuzz::scratch_folder folder;
  const std::string file = folder.write("catalogue.sqlite", fuzz::as_text(bytes, size));
  try {
    sqlite_catalogue_store store(file);
    const auto catalogue = read_catalogue(store);
    prevesk_dataset_data_type data(catalogue);
    data.resize_segments(2);
    for (const catalogue_model& model : catalogue->models) {
      data.model_type = model.model_id;
      data.refresh_from_catalogue(true);
      fuzz::demand(data.systems.size() == catalogue->find_model(model.model_id)->systems.size(),
                   "the data set lacks systems of its model");
    }
  } catch (const catalogue_exception& refusal) {
    fuzz::demand_sentence(refusal.what(), "");
  }
  return 0;
}
