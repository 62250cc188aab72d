// TAboutBox: the product, its version, edition, licence, folder and engine.
#pragma once

#include <QDialog>
#include <string>

namespace vesk {

class about_box final : public QDialog {
public:
  about_box(QWidget* parent, const std::string& edition, const std::string& engine);
};

} // namespace vesk
