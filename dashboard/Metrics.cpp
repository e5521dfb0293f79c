#include "dashboard/Metrics.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

namespace zeb {

namespace {

// The shortest digits that read back as the same number.
std::string Figure(double value) {
  std::array<char, 32> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
  return {digits.data(), end};
}

std::string Quoted(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '\\' || c == '"') quoted += '\\';
    if (c == '\n')
      quoted += "\\n";
    else
      quoted += c;
  }
  return quoted + '"';
}

std::string LabelsOf(const StationState& state) {
  return "service=" + Quoted(state.name) + ",number=\"" + std::to_string(state.number) + '"';
}

std::string LabelsOf(const StationState& state, const OutputState& output) {
  return LabelsOf(state) + ",output=" + Quoted(output.Name());
}

class Writer {
 public:
  Writer(const std::vector<StationState>& states, WallTime now) : states_(states), now_(now) {}

  void Begin(std::string_view name, std::string_view type, std::string_view help) {
    text.append("# HELP ").append(name).append(" ").append(help).append("\n");
    text.append("# TYPE ").append(name).append(" ").append(type).append("\n");
  }
  void Line(std::string_view name, std::string_view labels, double value) {
    text.append(name).append("{").append(labels).append("} ").append(Figure(value)).append("\n");
  }
  void OfServices(std::string_view name, std::string_view help,
                  const std::function<double(const StationState&)>& value) {
    Begin(name, "gauge", help);
    for (const StationState& state : states_) Line(name, LabelsOf(state), value(state));
  }
  void OfOutputs(std::string_view name, std::string_view type, std::string_view help,
                 const std::function<std::optional<double>(const OutputState&)>& value) {
    Begin(name, type, help);
    for (const StationState& state : states_)
      for (const OutputState& output : state.outputs)
        if (const auto figure = value(output)) Line(name, LabelsOf(state, output), *figure);
  }
  void Latencies() {
    constexpr std::string_view kName = "zeb_output_latency_seconds";
    Begin(kName, "histogram", "From the arrival of new information to its publication.");
    for (const StationState& state : states_)
      for (const OutputState& output : state.outputs)
        Latency(kName, LabelsOf(state, output), output.latencies);
  }
  double SecondsSince(const std::optional<WallTime>& moment) const {
    // The clock may have been put back.
    return moment ? std::max(0.0, std::chrono::duration<double>(now_ - *moment).count()) : 0;
  }

  std::string text;

 private:
  void Latency(std::string_view name, const std::string& labels, const LatencyHistogram& latencies) {
    const std::string start(name), upTo = labels + ",le=\"";
    std::uint64_t sofar = 0;
    for (std::size_t i = 0; i < latencies.counts.size(); ++i) {
      sofar += latencies.counts[i];
      const bool last = i == LatencyHistogram::kBounds.size();
      const std::string bound = last ? "+Inf" : Figure(LatencyHistogram::kBounds[i]);
      Line(start + "_bucket", upTo + bound + '"', static_cast<double>(sofar));
    }
    Line(start + "_sum", labels, latencies.sum);
    Line(start + "_count", labels, static_cast<double>(sofar));
  }

  const std::vector<StationState>& states_;
  const WallTime now_;
};

double Of(bool holds) {
  return holds ? 1 : 0;
}

}  // namespace

std::string MetricsText(const std::vector<StationState>& states, WallTime now) {
  Writer writer(states, now);
  writer.Begin("zeb_info", "gauge", "The program's version.");
  writer.Line("zeb_info", "version=\"" ZEB_VERSION "\"", 1);
  writer.OfServices("zeb_source_healthy", "Whether the service's source is open.",
                    [](const StationState& state) { return Of(state.source.healthy); });
  writer.OfServices("zeb_controller_connected", "Whether a playout system has control.",
                    [](const StationState& state) { return Of(!state.source.controller.empty()); });
  writer.OfServices("zeb_connections", "Connections to the service's control link.",
                    [](const StationState& state) { return state.source.connections; });
  using Output = const OutputState&;
  writer.OfOutputs("zeb_output_publications_total", "counter", "Runs that published something.",
                   [](Output output) { return static_cast<double>(output.publications); });
  writer.OfOutputs("zeb_output_failures_total", "counter", "Runs in which something failed.",
                   [](Output output) { return static_cast<double>(output.failures); });
  writer.OfOutputs("zeb_output_failing", "gauge", "Whether the output fails now.",
                   [](Output output) { return Of(output.severity == Severity::kFailing); });
  writer.OfOutputs(
      "zeb_output_stale_seconds", "gauge",
      "For how long the output has not shown the present item; 0: it does.",
      [&writer](Output output) { return output.stale ? writer.SecondsSince(output.staleSince) : 0.0; });
  writer.OfOutputs("zeb_output_queue_length", "gauge", "Snapshots and cues that wait for the output.",
                   [](Output output) { return output.waiting; });
  writer.OfOutputs("zeb_output_on_air_seconds", "gauge",
                   "From the arrival of the present information to the moment at which the public saw it.",
                   [](Output output) -> std::optional<double> {
                     if (!output.onAir) return std::nullopt;
                     return std::chrono::duration<double>(*output.onAir).count();
                   });
  writer.Latencies();
  return std::move(writer.text);
}

}  // namespace zeb
