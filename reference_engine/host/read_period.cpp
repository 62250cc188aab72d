#include "host/read_period.h"

#include "core/errors.h"
#include "core/text.h"

namespace reference_engine {

Moment read_start(Host& host) {
  Moment start;
  host.get("SEEDDATE", {&start.month, &start.day, &start.year});
  host.get("SEEDTIME", {&start.hour, &start.minute, &start.second});
  return start;
}

Period read_period(Host& host) {
  const Period period{read_start(host), host.real("ENDJULIAN")};
  const std::string calendar = text("the calendar, which reaches from ", first_date, " to ", last_date, ".");
  if (!period.start.reaches(0)) throw InputError("The start of the simulation is not a date of " + calendar);
  if (!period.start.reaches(period.days))
    throw InputError(text("The simulation starts at ", period.start.iso(' '), " and ends ", period.days,
                          " days later: its end is not a date of ", calendar));
  return period;
}

} // namespace reference_engine
