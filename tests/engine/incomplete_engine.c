#include "vesk_engine.h"

void execute_model(const char* library, vesk_data_callback data_callback) {
  (void)library;
  (void)data_callback;
}
