// The filters of file choosers: "Text|*.EXT|Text|*.*", as the settings' texts have them.
#pragma once

#include <QFileDialog>
#include <QStringList>
#include <string_view>

namespace zeb {

// The person sees the texts as they are; the one with `pattern` (any case) is chosen at first.
inline void ChooseFilters(QFileDialog& chooser, std::string_view filters, std::string_view pattern) {
  const auto text = [](std::string_view part) {
    return QString::fromUtf8(part.data(), static_cast<qsizetype>(part.size()));
  };
  const QStringList parts = text(filters).split('|');
  QStringList names;
  QString chosen;
  for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
    names.append(parts[i] + " (" + parts[i + 1] + ")");
    if (parts[i + 1].compare(text(pattern), Qt::CaseInsensitive) == 0) chosen = names.back();
  }
  chooser.setOption(QFileDialog::HideNameFilterDetails);
  chooser.setNameFilters(names);
  if (!chosen.isEmpty()) chooser.selectNameFilter(chosen);
}

}  // namespace zeb
