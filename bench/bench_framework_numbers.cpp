// Number text of the XML framework: HxDOUBLE2STRING (buffer and string forms) against
// snprintf("%.17g") in the same run, one value per iteration (Time = ns per value), and the
// writer's scalar path, which must not allocate.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "framework/HxNumberText.h"
#include "framework/HxXmlBasicType.h"
#include "framework/HxXmlTokens.h"
#include "framework/HxXmlWriter.h"
#include "tests/support/HxAllocationCounter.h"

namespace {

// A fixed set of doubles like those of a recording: mostly moderate magnitudes with full
// mantissas, some integers, some tiny and huge values.
const std::vector<double>& values() {
  static const std::vector<double> set = [] {
    std::mt19937_64 random(12345);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    std::uniform_int_distribution<int> exponent(-12, 12);
    std::vector<double> out;
    out.reserve(4096);
    for (int i = 0; i < 4096; ++i) {
      if (i % 16 == 0) {
        out.push_back(static_cast<double>(i));
      } else if (i % 64 == 1) {
        out.push_back(unit(random) * 1e-300);
      } else {
        out.push_back(unit(random) * std::pow(10.0, exponent(random)));
      }
    }
    return out;
  }();
  return set;
}

// The values as text, as HxDOUBLE2STRING writes them: the input of the parsing benchmarks.
const std::vector<std::string>& texts() {
  static const std::vector<std::string> set = [] {
    std::vector<std::string> out;
    for (const double value : values()) out.push_back(HxDOUBLE2STRING(value));
    return out;
  }();
  return set;
}

constexpr size_t kMask = 4095;

// Calls `body` on one element of `set` per iteration, in turn (Time = ns per value).
template <class Value, class Body>
void eachValue(benchmark::State& state, const std::vector<Value>& set, Body body) {
  size_t i = 0;
  for (auto _ : state) body(set[i++ & kMask]);
  state.SetItemsProcessed(state.iterations());
}

void BM_DoubleText_HxDouble2StringBuffer(benchmark::State& state) {
  char buffer[HxDoubleTextCapacity];
  eachValue(state, values(), [&buffer](double value) {
    char* end = HxDOUBLE2STRING(value, buffer);
    benchmark::DoNotOptimize(end);
    benchmark::ClobberMemory();
  });
}
BENCHMARK(BM_DoubleText_HxDouble2StringBuffer);

void BM_DoubleText_HxDouble2StringReused(benchmark::State& state) {
  std::string text;
  text.reserve(HxDoubleTextCapacity);
  HxAllocationCounter counter;
  eachValue(state, values(), [&text](double value) {
    HxDOUBLE2STRING(value, text);
    benchmark::DoNotOptimize(text.data());
  });
  state.counters["allocs_per_value"] =
      static_cast<double>(counter.allocations()) / static_cast<double>(state.iterations());
}
BENCHMARK(BM_DoubleText_HxDouble2StringReused);

void BM_DoubleText_HxDouble2StringReturned(benchmark::State& state) {
  eachValue(state, values(), [](double value) {
    std::string text = HxDOUBLE2STRING(value);
    benchmark::DoNotOptimize(text.data());
  });
}
BENCHMARK(BM_DoubleText_HxDouble2StringReturned);

// Baseline: what a C programmer writes for a round-trip-safe double.
void BM_DoubleText_Snprintf17g(benchmark::State& state) {
  char buffer[32];
  eachValue(state, values(), [&buffer](double value) {
    int length = std::snprintf(buffer, sizeof buffer, "%.17g", value);
    benchmark::DoNotOptimize(length);
    benchmark::ClobberMemory();
  });
}
BENCHMARK(BM_DoubleText_Snprintf17g);

void BM_DoubleParse_HxString2Double(benchmark::State& state) {
  eachValue(state, texts(), [](const std::string& text) {
    double value = 0.0;
    HxSTRING2DOUBLE(text, value);
    benchmark::DoNotOptimize(value);
  });
}
BENCHMARK(BM_DoubleParse_HxString2Double);

void BM_DoubleParse_Strtod(benchmark::State& state) {
  eachValue(state, texts(), [](const std::string& text) {
    double value = std::strtod(text.c_str(), nullptr);
    benchmark::DoNotOptimize(value);
  });
}
BENCHMARK(BM_DoubleParse_Strtod);

// A stream buffer that drops its input, so that only the writer is measured.
class DiscardBuffer : public std::streambuf {
 protected:
  std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
  int_type overflow(int_type c) override { return traits_type::not_eof(c); }
};

// One <time>value</time> element per iteration, under a namespaced token, as a recording writes.
void BM_XmlWriter_ScalarElement(benchmark::State& state) {
  DiscardBuffer buffer;
  std::ostream stream(&buffer);
  // Registered, as the module registers its namespace: declared once on the root.
  HxXmlWriter::registerNamespacePrefix("http://example.org/namespace/sm#", "sm");
  HxXmlWriter writer("bench", stream);
  HxToken time("http://example.org/namespace/sm#time");
  HxXmlBasicType<double> value;
  writer.startElement(HxXml::HxDefaultToken);
  HxAllocationCounter counter;
  eachValue(state, values(), [&](double v) {
    value = v;
    writer.startElement(time);
    value.write(writer);
    writer.endElement();
  });
  state.counters["allocs_per_value"] =
      static_cast<double>(counter.allocations()) / static_cast<double>(state.iterations());
  writer.endElement();
}
BENCHMARK(BM_XmlWriter_ScalarElement);

// One scalar of a data-mode group per iteration.
void BM_XmlWriter_GroupScalar(benchmark::State& state) {
  DiscardBuffer buffer;
  std::ostream stream(&buffer);
  HxXmlWriter writer("bench", stream);
  HxXmlBasicType<double> value;
  writer.startElement(HxXml::HxDefaultToken);
  writer.startElement(HxXml::HxGroupToken);
  writer.setDataMode(true);
  eachValue(state, values(), [&](double v) {
    value = v;
    value.write(writer);
  });
  writer.endElement();
  writer.endElement();
}
BENCHMARK(BM_XmlWriter_GroupScalar);

}  // namespace

BENCHMARK_MAIN();
