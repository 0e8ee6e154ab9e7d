// Prints medians of processor time side by side: one line for each thing measured, one column for each library, and
// how the first library's median stands to each other one's. Below 1, the first is ahead.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

// Takes benchmarks named "thing/library".
class CRatioTable : public benchmark::BenchmarkReporter {
public:
    explicit CRatioTable(std::vector<std::string> libraries) : libraries_(std::move(libraries)) {}

    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;
    void Finalize() override;

private:
    struct Line {
        std::map<std::string, std::vector<double>> times; // in microseconds, by library
        std::map<std::string, double> bytes;
    };

    void Print(const std::string& label, const std::map<std::string, double>& values) const;

    std::vector<std::string> libraries_;
    std::vector<std::string> order_;
    std::map<std::string, Line> lines_;
};
