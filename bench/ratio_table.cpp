#include "ratio_table.h"

#include <algorithm>
#include <cstdio>

namespace {

double Median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 != 0 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

} // namespace

bool CRatioTable::ReportContext(const Context& context)
{
    PrintBasicContext(&GetErrorStream(), context);
    return true;
}

void CRatioTable::ReportRuns(const std::vector<Run>& runs)
{
    for (const Run& run : runs) {
        const std::string name = run.benchmark_name();
        if (run.error_occurred) {
            std::fprintf(stderr, "%s: %s\n", name.c_str(), run.error_message.c_str());
        }
        if (run.run_type != Run::RT_Iteration || run.error_occurred) {
            continue;
        }
        const std::string thing = run.run_name.function_name.substr(0, run.run_name.function_name.find('/'));
        const std::string library = run.run_name.function_name.substr(thing.size() + 1);
        auto [line, fresh] = lines_.try_emplace(thing);
        if (fresh) {
            order_.push_back(thing);
        }
        line->second.times[library].push_back(run.cpu_accumulated_time * 1e6 / static_cast<double>(run.iterations));
        if (const auto bytes = run.counters.find("bytes_per_node"); bytes != run.counters.end()) {
            line->second.bytes[library] = bytes->second.value;
        }
    }
}

void CRatioTable::Finalize()
{
    std::printf("%-22s", "median CPU time, us");
    for (const std::string& library : libraries_) {
        std::printf("%12s", library.c_str());
    }
    for (std::size_t at = 1; at < libraries_.size(); ++at) {
        std::printf("%12s", ("/ " + libraries_[at]).c_str());
    }
    std::printf("\n");
    std::sort(order_.begin(), order_.end());
    for (const std::string& thing : order_) {
        std::map<std::string, double> medians;
        for (const auto& [library, times] : lines_[thing].times) {
            medians[library] = Median(times);
        }
        Print(thing, medians);
        if (!lines_[thing].bytes.empty()) {
            Print(thing + ", B/node", lines_[thing].bytes);
        }
    }
}

void CRatioTable::Print(const std::string& label, const std::map<std::string, double>& values) const
{
    std::printf("%-22s", label.c_str());
    for (const std::string& library : libraries_) {
        const auto value = values.find(library);
        value == values.end() ? std::printf("%12s", "") : std::printf("%12.3f", value->second);
    }
    const auto first = values.find(libraries_[0]);
    for (std::size_t at = 1; at < libraries_.size() && first != values.end(); ++at) {
        const auto value = values.find(libraries_[at]);
        value == values.end() ? std::printf("%12s", "") : std::printf("%12.2f", first->second / value->second);
    }
    std::printf("\n");
}
