// Splitting, joining and trimming: a line of eight fields, most of them short.

#include <Infrastructure/OxaCore/StringTools.h>

#include "BenchSupport.h"

#include <string>
#include <vector>

#ifdef OXA_PEER_ABSL
#include <absl/strings/ascii.h>
#include <absl/strings/str_join.h>
#include <absl/strings/str_split.h>
#endif
#ifdef OXA_PEER_POCO
#include <Poco/String.h>
#include <Poco/StringTokenizer.h>
#endif

namespace {

namespace StringTools = Oxa::Core::StringTools;
using Texts = std::vector<std::string>;

const std::string g_sLINE = "2026-11-21;fast;1ms;500;250us;a field that is longer than the others;;17.25";
const std::string g_sDELIMITER = ";";
const std::string g_sPADDED = "  \ta field that is longer than the others \r\n";

Texts Fields() {
  Texts fields;
  StringTools::Split(g_sLINE, g_sDELIMITER, fields);
  return fields;
}

void OursSplit(benchmark::State& state) {
  for (auto _ : state) {
    Texts fields;
    StringTools::Split(g_sLINE, g_sDELIMITER, fields);
    benchmark::DoNotOptimize(fields);
  }
}

OXA_BENCH("Split", "Ours", OursSplit);

void OursSplitAgain(benchmark::State& state) {
  Texts fields;
  for (auto _ : state) {
    StringTools::Split(g_sLINE, g_sDELIMITER, fields);
    benchmark::DoNotOptimize(fields);
  }
}

OXA_BENCH("Split into the same list", "Ours", OursSplitAgain);

void OursJoin(benchmark::State& state) {
  const Texts fields = Fields();
  for (auto _ : state) benchmark::DoNotOptimize(StringTools::Join(fields, g_sDELIMITER));
}

OXA_BENCH("Join", "Ours", OursJoin);

void OursTrim(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(StringTools::TrimWS(g_sPADDED));
}

OXA_BENCH("Trim", "Ours", OursTrim);

#ifdef OXA_PEER_ABSL
void AbslSplit(benchmark::State& state) {
  for (auto _ : state) {
    Texts fields = absl::StrSplit(g_sLINE, g_sDELIMITER);
    benchmark::DoNotOptimize(fields);
  }
}

OXA_BENCH("Split", "absl", AbslSplit);

void AbslSplitAgain(benchmark::State& state) {
  Texts fields;
  for (auto _ : state) {
    fields = absl::StrSplit(g_sLINE, g_sDELIMITER);
    benchmark::DoNotOptimize(fields);
  }
}

OXA_BENCH("Split into the same list", "absl", AbslSplitAgain);

void AbslJoin(benchmark::State& state) {
  const Texts fields = Fields();
  for (auto _ : state) benchmark::DoNotOptimize(absl::StrJoin(fields, g_sDELIMITER));
}

OXA_BENCH("Join", "absl", AbslJoin);

void AbslTrim(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(std::string(absl::StripAsciiWhitespace(g_sPADDED)));
}

OXA_BENCH("Trim", "absl", AbslTrim);
#endif

#ifdef OXA_PEER_POCO
void PocoSplit(benchmark::State& state) {
  for (auto _ : state) {
    const Poco::StringTokenizer fields(g_sLINE, g_sDELIMITER);
    benchmark::DoNotOptimize(&fields);
  }
}

OXA_BENCH("Split", "Poco", PocoSplit);

void PocoJoin(benchmark::State& state) {
  const Texts fields = Fields();
  for (auto _ : state) benchmark::DoNotOptimize(Poco::cat(g_sDELIMITER, fields.begin(), fields.end()));
}

OXA_BENCH("Join", "Poco", PocoJoin);

void PocoTrim(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(Poco::trim(g_sPADDED));
}

OXA_BENCH("Trim", "Poco", PocoTrim);
#endif

}  // namespace
