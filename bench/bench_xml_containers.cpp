// Writing and reading back the serialisable vectors: 100,000 doubles (one group element) and
// 10,000 small compounds (one wrapper element each), with a printf baseline for the doubles and
// the per-sample streaming path.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <sstream>
#include <streambuf>
#include <string>

#include "analysis/xml/HxXmlVectorType.h"
#include "framework/HxPrint.h"
#include "framework/HxXmlBasicType.h"
#include "framework/HxXmlCompoundType.h"
#include "framework/HxXmlReader.h"
#include "framework/HxXmlWriter.h"
#include "tests/support/HxAllocationCounter.h"

namespace {

/// A small compound with a few scalar members.
class BenchPoint : public HxXmlCompoundType {
 public:
  HxXmlObject* clone() const override { return new BenchPoint(*this); }
  HxXmlObject* newObject() const override { return new BenchPoint(); }
  HxBoolean equality(const HxXmlObject* other) const override {
    const auto* point = dynamic_cast<const BenchPoint*>(other);
    return point != nullptr && *this == *point;
  }
  const HxToken& token() const override {
    static const HxToken token("point");
    return token;
  }
  void registerComponents() override {
    registerComponent("x", &x);
    registerComponent("y", &y);
    registerComponent("z", &z);
    registerComponent("id", &id);
  }
  bool operator==(const BenchPoint& other) const {
    return x == other.x && y == other.y && z == other.z && id == other.id;
  }

  HxXmlBasicType<double> x;
  HxXmlBasicType<double> y;
  HxXmlBasicType<double> z;
  HxXmlBasicType<unsigned int> id;
};

using Doubles = HxXmlVectorType<HxXmlBasicType<double>>;
using Points = HxXmlVectorType<BenchPoint>;

/// Drops everything written to it and counts the bytes, so that only serialisation is timed.
class CountingBuffer : public std::streambuf {
 public:
  std::size_t bytes = 0;

 protected:
  int overflow(int c) override {
    ++bytes;
    return c;
  }
  std::streamsize xsputn(const char*, std::streamsize count) override {
    bytes += static_cast<std::size_t>(count);
    return count;
  }
};

double sampleValue(std::size_t i) { return 1.0 / 3.0 * static_cast<double>(i) - 1234.5678; }

Doubles makeDoubles(std::size_t count) {
  Doubles vector;
  vector.reserve(static_cast<HxU32>(count));
  for (std::size_t i = 0; i < count; ++i) vector.pushBack(sampleValue(i));
  return vector;
}

Points makePoints(std::size_t count) {
  Points vector;
  BenchPoint point;
  for (std::size_t i = 0; i < count; ++i) {
    point.x = sampleValue(i);
    point.y = -sampleValue(i) * 1e-3;
    point.z = sampleValue(i) * 1e7;
    point.id = static_cast<unsigned int>(i);
    vector.pushBack(point);
  }
  return vector;
}

std::string toText(const HxXmlObject& object) {
  std::ostringstream out;
  HxXmlWriter writer("bench", out);
  writer.writeObject(object, "v");
  return out.str();
}

template <class Vector>
void writeVector(benchmark::State& state, const Vector& vector) {
  CountingBuffer buffer;
  std::ostream stream(&buffer);
  for (auto _ : state) {
    HxXmlWriter writer("bench", stream);
    benchmark::DoNotOptimize(writer.writeObject(vector, "v"));
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * vector.size());
  state.SetBytesProcessed(static_cast<int64_t>(buffer.bytes));
}

template <class Vector>
void readVector(benchmark::State& state, const Vector& source) {
  const std::string text = toText(source);
  Vector vector;
  for (auto _ : state) {
    HxXmlReader reader;
    reader.openMemory(text, "bench.xml");
    if (!reader.readObject(vector) || vector.size() != source.size()) {
      state.SkipWithError("read failed");
      break;
    }
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * source.size());
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(text.size()));
}

void BM_XmlContainers_WriteDoubles(benchmark::State& state) {
  writeVector(state, makeDoubles(static_cast<std::size_t>(state.range(0))));
}
BENCHMARK(BM_XmlContainers_WriteDoubles)->Arg(100000)->Unit(benchmark::kMillisecond);

// Baseline for the figure above: the same doubles as "%.17g" text through snprintf into the
// same kind of stream.
void BM_XmlContainers_WriteDoublesSnprintfBaseline(benchmark::State& state) {
  const std::size_t count = static_cast<std::size_t>(state.range(0));
  CountingBuffer buffer;
  char text[32];
  for (auto _ : state) {
    for (std::size_t i = 0; i < count; ++i) {
      const int length = std::snprintf(text, sizeof text, "%.17g ", sampleValue(i));
      buffer.sputn(text, length);
    }
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * count));
  state.SetBytesProcessed(static_cast<int64_t>(buffer.bytes));
}
BENCHMARK(BM_XmlContainers_WriteDoublesSnprintfBaseline)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_XmlContainers_ReadDoubles(benchmark::State& state) {
  Hx::ScopedPrintCapture quiet;
  readVector(state, makeDoubles(static_cast<std::size_t>(state.range(0))));
}
BENCHMARK(BM_XmlContainers_ReadDoubles)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_XmlContainers_WriteCompounds(benchmark::State& state) {
  writeVector(state, makePoints(static_cast<std::size_t>(state.range(0))));
}
BENCHMARK(BM_XmlContainers_WriteCompounds)->Arg(10000)->Unit(benchmark::kMillisecond);

void BM_XmlContainers_ReadCompounds(benchmark::State& state) {
  Hx::ScopedPrintCapture quiet;
  readVector(state, makePoints(static_cast<std::size_t>(state.range(0))));
}
BENCHMARK(BM_XmlContainers_ReadCompounds)->Arg(10000)->Unit(benchmark::kMillisecond);

// The recorder's per-sample path: one element appended to an open stream. Reports the heap
// allocations per appended element (expected 0).
template <class Vector, class Element>
void appendElements(benchmark::State& state, const Element& element) {
  CountingBuffer buffer;
  std::ostream stream(&buffer);
  const Vector header;
  HxXmlWriter* writer = nullptr;
  header.writeHeaderToStream(stream, writer, "bench", "v");
  header.appendElementToStream(writer, element);  // warm up
  const HxAllocationCounter counter;
  for (auto _ : state) {
    benchmark::DoNotOptimize(header.appendElementToStream(writer, element));
  }
  state.counters["allocs_per_item"] =
      benchmark::Counter(static_cast<double>(counter.allocations()) / static_cast<double>(state.iterations()));
  header.writeFooterToStream(writer);
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
  state.SetBytesProcessed(static_cast<int64_t>(buffer.bytes));
}

void BM_XmlContainers_AppendDouble(benchmark::State& state) {
  appendElements<Doubles>(state, HxXmlBasicType<double>(sampleValue(12345)));
}
BENCHMARK(BM_XmlContainers_AppendDouble);

void BM_XmlContainers_AppendCompound(benchmark::State& state) { appendElements<Points>(state, makePoints(2)[1]); }
BENCHMARK(BM_XmlContainers_AppendCompound);

}  // namespace

BENCHMARK_MAIN();
