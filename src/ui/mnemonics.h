// Letters that select a control together with Alt.
#pragma once

#include <QString>

class QWidget;

namespace vesk {

// Gives each button and control label within `page` that has no letter yet a unique one, the first of a word if
// possible. `taken`: letters used around the page. "OK" and "Cancel" have their own keys.
void give_mnemonics(QWidget& page, QString taken = {});

} // namespace vesk
