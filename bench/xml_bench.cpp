// This library beside pugixml, TinyXML-2 and Expat in one run of 15 interleaved repetitions, which prints a table of
// their medians. bench/xml-table runs it piece by piece; docs/xml.md holds the table.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <map>
#include <string>
#include <vector>

#include "ratio_table.h"
#include "xml_libraries.h"

namespace {

using namespace xml_bench;

const std::string options_text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<ZanPartkeepReadConfig>\n"
                                 "  <InputNoFlag>true</InputNoFlag>\n  <FilterState>2</FilterState>\n"
                                 "</ZanPartkeepReadConfig>";

struct Sample {
    std::string text;
    std::size_t nodes = 1; // elements and attributes
};

// Nested elements with attributes and short texts. The root has a single child, which holds everything.
Sample MakeSample(std::size_t size)
{
    Sample sample;
    sample.text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<catalog>\n  <parts>\n";
    sample.nodes = 2;
    for (std::size_t at = 0; sample.text.size() < size; ++at) {
        const std::string number = std::to_string(at);
        sample.text += "    <part id=\"" + number + "\" kind=\"laser\">\n      <name>bracket " + number +
                       "</name>\n      <quantity>" + std::to_string(at % 50) +
                       "</quantity>\n      <size unit=\"mm\">\n" + "        <x>" + std::to_string(at % 900) +
                       ".5</x>\n        <y>20</y>\n      </size>\n    </part>\n";
        sample.nodes += 9;
    }
    sample.text += "  </parts>\n</catalog>\n";
    return sample;
}

const Sample& SampleOf(std::size_t megabytes)
{
    static std::map<std::size_t, Sample> samples;
    auto [place, fresh] = samples.try_emplace(megabytes);
    if (fresh) {
        place->second = MakeSample(megabytes * 1'000'000);
    }
    return place->second;
}

void SetRate(benchmark::State& state, const Sample& sample)
{
    state.SetBytesProcessed(static_cast<std::int64_t>(sample.text.size()) *
                            static_cast<std::int64_t>(state.iterations()));
}

std::size_t MemoryInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

// Of large documents alone: pages that a pool has kept from an earlier one would make a small one look free.
template <class Make>
void CountBytes(benchmark::State& state, std::size_t megabytes, Make make)
{
    if (megabytes < 50) {
        return;
    }
    const std::size_t before = MemoryInUse();
    const DocumentPtr document = make();
    state.counters["bytes_per_node"] =
        static_cast<double>(MemoryInUse() - before) / static_cast<double>(SampleOf(megabytes).nodes);
}

void Parse(benchmark::State& state, const Library& library, std::size_t megabytes)
{
    const Sample& sample = SampleOf(megabytes);
    for (auto _ : state) {
        benchmark::DoNotOptimize(library.Read(sample.text));
    }
    CountBytes(state, megabytes, [&] { return library.Read(sample.text); });
    SetRate(state, sample);
}

// `compact`: of a copy of the parsed tree rather than of that tree.
DocumentPtr Prepared(const Library& library, std::size_t megabytes, bool compact)
{
    DocumentPtr document = library.Read(SampleOf(megabytes).text);
    return compact ? library.Copy(*document) : std::move(document);
}

void Write(benchmark::State& state, const Library& library, std::size_t megabytes, bool compact)
{
    const DocumentPtr document = Prepared(library, megabytes, compact);
    for (auto _ : state) {
        benchmark::DoNotOptimize(library.Write(*document));
    }
    SetRate(state, SampleOf(megabytes));
}

void Walk(benchmark::State& state, const Library& library, std::size_t megabytes, bool compact)
{
    const DocumentPtr document = Prepared(library, megabytes, compact);
    for (auto _ : state) {
        benchmark::DoNotOptimize(library.Walk(*document));
    }
    SetRate(state, SampleOf(megabytes));
}

void Copy(benchmark::State& state, const Library& library, std::size_t megabytes, bool compact)
{
    const DocumentPtr document = Prepared(library, megabytes, compact);
    for (auto _ : state) {
        benchmark::DoNotOptimize(library.Copy(*document));
    }
    CountBytes(state, megabytes, [&] { return library.Copy(*document); });
    SetRate(state, SampleOf(megabytes));
}

void Append(benchmark::State& state, const Library& library, int count)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(library.Append(count));
    }
    state.SetItemsProcessed(count * static_cast<std::int64_t>(state.iterations()));
}

void ReadOptions(benchmark::State& state, const Library& library)
{
    if (library.ReadOptions(options_text) != 102) {
        state.SkipWithError("wrong options");
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(library.ReadOptions(options_text));
    }
}

void WriteOptions(benchmark::State& state, const Library& library)
{
    if (library.WriteOptions(true, 2).find("<FilterState>2</FilterState>") == std::string::npos) {
        state.SkipWithError("wrong options");
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(library.WriteOptions(true, 2));
    }
}

void ParseWithExpat(benchmark::State& state, std::size_t megabytes)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(ReadWithExpat(SampleOf(megabytes).text));
    }
    SetRate(state, SampleOf(megabytes));
}

// How the stream hands its bytes over: each only when it is asked for, with a buffer that holds no more than that one
// or with none at all.
void ParseByteByByte(benchmark::State& state, bool buffered)
{
    const Sample& sample = SampleOf(1);
    for (auto _ : state) {
        benchmark::DoNotOptimize(ReadByteByByte(sample.text, buffered));
    }
    SetRate(state, sample);
}

template <class... Arguments>
void Register(const std::string& name, Arguments... arguments)
{
    benchmark::RegisterBenchmark(name.c_str(), arguments...);
}

void RegisterLibrary(const std::string& name, const Library& library)
{
    Register("options_read/" + name, ReadOptions, std::cref(library));
    Register("options_write/" + name, WriteOptions, std::cref(library));
    for (const std::size_t megabytes : {1U, 50U}) {
        const std::string size = std::to_string(megabytes) + "MB/" + name;
        Register("parse_" + size, Parse, std::cref(library), megabytes);
        Register("write_" + size, Write, std::cref(library), megabytes, false);
        Register("walk_" + size, Walk, std::cref(library), megabytes, false);
        Register("walk_copied_" + size, Walk, std::cref(library), megabytes, true);
        Register("copy_" + size, Copy, std::cref(library), megabytes, false);
        Register("copy_copied_" + size, Copy, std::cref(library), megabytes, true);
    }
    for (const int count : {1'000, 10'000, 100'000, 1'000'000}) {
        Register("append_" + std::to_string(count) + "/" + name, Append, std::cref(library), count);
    }
}

} // namespace

int main(int argc, char** argv)
{
    RegisterLibrary("partkeep", Partkeep());
    RegisterLibrary("pugixml", Pugixml());
    RegisterLibrary("tinyxml2", Tinyxml2());
    Register("parse_1MB/expat", ParseWithExpat, std::size_t{1});
    Register("parse_50MB/expat", ParseWithExpat, std::size_t{50});
    Register("parse_unbuffered_1MB/partkeep", ParseByteByByte, false);
    Register("parse_one_byte_buffer_1MB/partkeep", ParseByteByByte, true);
    // The heap keeps what is freed: whether a page has to come from the system anew would otherwise hang on which
    // library freed what before, and cost more than most of what is measured here.
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
    mallopt(M_MMAP_MAX, 0);
    // What the caller asks for comes behind, and counts.
    std::string defaults[] = {"--benchmark_enable_random_interleaving=true", "--benchmark_repetitions=15",
                              "--benchmark_min_time=0.03"};
    std::vector<char*> arguments = {argv[0], defaults[0].data(), defaults[1].data(), defaults[2].data()};
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    CRatioTable table({"partkeep", "pugixml", "tinyxml2", "expat"});
    benchmark::RunSpecifiedBenchmarks(&table);
    benchmark::Shutdown();
    return 0;
}
