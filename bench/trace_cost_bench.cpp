// What a trace point costs when tracing is compiled in but filtered out.
//
// This file is built twice: qvimanager_bench_traced against the library,
// whose CMetryService::GetVector has a trace point, and
// qvimanager_bench_untraced against QVIManagerUntraced, the same library with
// its trace points compiled out. Both time the service's Lab call (under the
// name QVIMANAGER_BENCH_SERVICE_LAB: ServiceLabTracedFilteredOut or
// ServiceLabUntraced) and BareLabKernel, and both run alike: the program sets
// QVIMANAGER_TRACE=1 before anything of the library runs and works in a
// scratch folder whose PackageDiagnosticsFilter.txt lists "CMetry". In the
// traced program the trace point is therefore on the switch but filtered
// out, and its decision, made at the first call, is remembered. A line it
// wrote would start DebugOutput.txt in the scratch folder; the benchmark
// reports an error if that file is there before or after the timing.
// trace_cost.py compares the two programs' ratios to their own kernel.

#include "lab_bench.h"

#include <qvimanager/diagnostics/trace.h>
#include <qvimanager/qvimanager.h>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr const char* kTraceFile = "DebugOutput.txt";

// The scratch folder, made the working directory; the previous one is the
// working directory again and the folder is removed with the object.
class TraceFolder {
public:
    TraceFolder()
    {
        std::error_code error;
        previous = fs::current_path(error);
        if (error) {
            problem = "cannot read the working directory: " + error.message();
            return;
        }
        std::string pattern = (fs::temp_directory_path() / "qvimanager-bench-trace-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            problem = "cannot make a scratch folder in " + fs::temp_directory_path().string();
            return;
        }
        root = pattern;
        std::ofstream filter(root / "PackageDiagnosticsFilter.txt");
        filter << "CMetry\n";
        filter.close();
        if (!filter) {
            problem = "cannot write the filter file in " + root.string();
            return;
        }
        fs::current_path(root, error);
        if (error) {
            problem = "cannot work in " + root.string() + ": " + error.message();
        }
    }
    ~TraceFolder()
    {
        std::error_code ignored;
        if (!previous.empty()) {
            fs::current_path(previous, ignored);
        }
        if (!root.empty()) {
            fs::remove_all(root, ignored);
        }
    }
    TraceFolder(const TraceFolder&) = delete;
    TraceFolder& operator=(const TraceFolder&) = delete;

    fs::path previous;
    fs::path root;
    // Empty when the folder is ready and the working directory.
    std::string problem;
};

bool TraceWritten()
{
    std::error_code ignored;
    return fs::exists(kTraceFile, ignored);
}

// ServiceLabUnchanged's loop, between two looks for a trace file. The call
// before the first look makes the trace point decide.
void ServiceLab(benchmark::State& state)
{
    benchmark::DoNotOptimize(
        CMetry::CMetryService::GetVector(Bench::Ramp(0.2f, 0.015f), Bench::Conditions("CIELab", "D50")));
    if (TraceWritten()) {
        state.SkipWithError("DebugOutput.txt written before the timing: the trace point is not filtered out");
        return;
    }
    Bench::GetVectorUnchanged(state, "CIELab");
    if (TraceWritten()) {
        state.SkipWithError("DebugOutput.txt written during the timing: the trace point is not filtered out");
    }
}

// The working directory changes before the benchmarks run: a relative
// --benchmark_out is made absolute first, so that the results land where
// they were asked for.
std::vector<std::string> AbsoluteOutput(int argc, char** argv)
{
    const std::string option = "--benchmark_out=";
    std::vector<std::string> arguments(argv, argv + argc);
    for (std::string& argument : arguments) {
        if (argument.compare(0, option.size(), option) == 0 && argument.size() > option.size()) {
            argument = option + fs::absolute(argument.substr(option.size())).string();
        }
    }
    return arguments;
}

} // namespace

int main(int argc, char** argv)
{
    // The switch is read once, at the first trace point the process reaches;
    // nothing of the library has run yet.
    if (setenv("QVIMANAGER_TRACE", "1", 1) != 0) {
        std::fprintf(stderr, "cannot set QVIMANAGER_TRACE\n");
        return 1;
    }
    std::vector<std::string> arguments = AbsoluteOutput(argc, argv);
    std::vector<char*> pointers;
    for (std::string& argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    int count = argc;

    const TraceFolder folder;
    if (!folder.problem.empty()) {
        std::fprintf(stderr, "%s\n", folder.problem.c_str());
        return 1;
    }
    if (!Diagnostics::TraceSwitch::IsOn()) {
        std::fprintf(stderr, "tracing is off although QVIMANAGER_TRACE=1: the switch was read before it was set\n");
        return 1;
    }

    benchmark::Initialize(&count, pointers.data());
    if (benchmark::ReportUnrecognizedArguments(count, pointers.data())) {
        return 1;
    }
    benchmark::RegisterBenchmark(QVIMANAGER_BENCH_SERVICE_LAB, ServiceLab);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();

    if (TraceWritten()) {
        std::fprintf(stderr, "%s written: the trace point is not filtered out\n", kTraceFile);
        return 1;
    }
    return 0;
}
