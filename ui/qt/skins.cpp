#include "ui/qt/skins.h"

#include <QColor>
#include <QString>

#include <array>
#include <string_view>

namespace vlout::ui::qt {
namespace {

struct SkinColours {
  std::string_view file;
  QRgb window;
  QRgb text;
  QRgb base;
  QRgb button;
  QRgb border;
  QRgb accent;
  QRgb onAccent;
};

constexpr std::array<SkinColours, 2> kSkins{{
    {"WinXP.Luna.cjstyles", 0xFFECE9D8, 0xFF1A1A1A, 0xFFFFFFFF, 0xFFF7F5EC, 0xFF7F9DB9, 0xFF316AC5,
     0xFFFFFFFF},
    {"Office2007.cjstyles", 0xFFBFDBFF, 0xFF15428B, 0xFFFFFFFF, 0xFFDCEAFC, 0xFF6593CF, 0xFFFFBD69,
     0xFF15428B},
}};

QString name(QRgb colour) {
  return QColor::fromRgb(colour).name();
}

}  // namespace

std::optional<Skin> skinOf(const std::filesystem::path& skinFile) {
  for (const SkinColours& each : kSkins) {
    if (skinFile.filename() != each.file) continue;
    Skin skin;
    QPalette& palette = skin.palette;
    palette = QPalette(QColor::fromRgb(each.button), QColor::fromRgb(each.window));
    for (const auto group : {QPalette::Active, QPalette::Inactive}) {  // disabled ones stay grey
      palette.setColor(group, QPalette::WindowText, QColor::fromRgb(each.text));
      palette.setColor(group, QPalette::Text, QColor::fromRgb(each.text));
      palette.setColor(group, QPalette::ButtonText, QColor::fromRgb(each.text));
    }
    palette.setColor(QPalette::Base, QColor::fromRgb(each.base));
    palette.setColor(QPalette::Highlight, QColor::fromRgb(each.accent));
    palette.setColor(QPalette::HighlightedText, QColor::fromRgb(each.onAccent));
    skin.styleSheet = QStringLiteral(
                          "QPushButton { background: %1; border: 1px solid %2; border-radius: 3px; "
                          "padding: 4px 12px; } "
                          "QPushButton:hover, QPushButton:focus { border-color: %3; } "
                          "QPushButton:pressed { background: %2; } "
                          "QPushButton:disabled { color: gray; } "
                          "QProgressBar { border: 1px solid %2; text-align: center; } "
                          "QProgressBar::chunk { background: %3; }")
                          .arg(name(each.button), name(each.border), name(each.accent));
    return skin;
  }
  return std::nullopt;
}

}  // namespace vlout::ui::qt
