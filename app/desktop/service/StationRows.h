// What is to be seen of a service, as rows of the service window's grids.
#pragma once

#include <QStringList>
#include <vector>

#include "app/desktop/service/GridModel.h"
#include "core/clsZEBService.h"
#include "status/StationState.h"

namespace zeb {

QStringList ItemColumns();
// On air, next ones, coming soon, previous ones; keys are slots.
std::vector<GridRow> ItemRows(const StationState& state);

QStringList OutputColumns();
inline constexpr std::size_t kProblemColumn = 6;
// Keys are KeyOf the output.
std::vector<GridRow> OutputRows(const StationState& state, const clsZEBService& service);
std::uint64_t KeyOf(const OutputPtr& output);
// Null: the output has gone.
OutputPtr OutputOf(std::uint64_t key, const clsZEBService& service);

// "DAB 1", "WEB 2".
QString OutputTitle(const clsZEBTemplate& output, int number);
// Text or page names, in one line.
QString ShownLine(const Shown& shown);
// The first part of a path that a person looks for: "now.html".
QString FileNameOf(const std::string& path);

}  // namespace zeb
