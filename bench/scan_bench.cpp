// The naming service's start-up scan of twenty plug-in files.
//
// The scan runs once per process, at the first NamingService::Instance(),
// so it is timed in child processes. A scratch folder, made once, holds a
// copy of the host program (scan_host.cpp) and beside it a folder "plugins"
// with the twenty bench plug-ins, each offering a component of its own
// name. Every iteration runs the host once; the host times its own first
// Instance() with the steady clock, and that is the iteration's time. The
// counter child_wall_us is the whole child as this program sees it: spawn,
// loading of the program and the library, the scan, the exit with the
// release of the service and the files.

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace {

namespace fs = std::filesystem;

constexpr int kPlugins = 20;

// The scratch folder, removed with the object.
class ScanFolder {
public:
    ScanFolder()
    {
        std::string pattern = (fs::temp_directory_path() / "qvimanager-bench-scan-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            problem = "cannot make a scratch folder in " + fs::temp_directory_path().string();
            return;
        }
        root = pattern;
        std::error_code error;
        fs::path source = QVIMANAGER_BENCH_SCAN_HOST;
        fs::copy_file(source, Host(), error);
        if (!error) {
            fs::create_directory(root / "plugins", error);
        }
        for (int index = 0; index < kPlugins && !error; ++index) {
            char name[32];
            std::snprintf(name, sizeof name, "bench_counter_%02d.dll", index);
            source = fs::path(QVIMANAGER_BENCH_PLUGIN_DIR) / name;
            fs::copy_file(source, root / "plugins" / name, error);
        }
        if (error) {
            problem = "cannot copy " + source.string() + " into " + root.string() + ": " + error.message();
        }
    }
    ~ScanFolder()
    {
        if (!root.empty()) {
            std::error_code ignored;
            fs::remove_all(root, ignored);
        }
    }
    ScanFolder(const ScanFolder&) = delete;
    ScanFolder& operator=(const ScanFolder&) = delete;

    fs::path Host() const
    {
        return root / "scan_host";
    }

    fs::path root;
    // Empty when the folder is ready.
    std::string problem;
};

// Made on first use, removed when the program ends.
const ScanFolder& Folder()
{
    static const ScanFolder folder;
    return folder;
}

struct HostRun {
    // Empty when the run went well.
    std::string problem;
    double scanMicroseconds = 0.0;
    long components = 0;
    double wallMicroseconds = 0.0;
};

// Runs the host once and reads its line.
HostRun RunHost(const fs::path& host)
{
    HostRun run;
    int pipeEnds[2];
    if (pipe2(pipeEnds, O_CLOEXEC) != 0) {
        run.problem = "cannot make a pipe";
        return run;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, pipeEnds[1], STDOUT_FILENO);
    std::string path = host.string();
    char* arguments[] = {path.data(), nullptr};

    const auto start = std::chrono::steady_clock::now();
    pid_t child = 0;
    const int spawned = posix_spawn(&child, path.c_str(), &actions, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    close(pipeEnds[1]);
    std::string output;
    char buffer[256];
    ssize_t got = 0;
    while ((got = read(pipeEnds[0], buffer, sizeof buffer)) > 0) {
        output.append(buffer, static_cast<std::size_t>(got));
    }
    close(pipeEnds[0]);
    if (spawned != 0) {
        run.problem = "cannot run " + path;
        return run;
    }
    int status = 0;
    waitpid(child, &status, 0);
    const auto end = std::chrono::steady_clock::now();
    run.wallMicroseconds = std::chrono::duration<double, std::micro>(end - start).count();

    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0 ||
        std::sscanf(output.c_str(), "%lf %ld", &run.scanMicroseconds, &run.components) != 2) {
        run.problem = "the scan host failed or printed \"" + output + "\"";
    }
    return run;
}

void StartupScanTwentyPlugins(benchmark::State& state)
{
    // Texts handed to SkipWithError outlive the call.
    static std::string problem;
    const ScanFolder& folder = Folder();
    if (!folder.problem.empty()) {
        problem = folder.problem;
        state.SkipWithError(problem.c_str());
        return;
    }
    double wallMicroseconds = 0.0;
    for (auto _ : state) {
        HostRun run = RunHost(folder.Host());
        if (run.problem.empty() && run.components != kPlugins) {
            run.problem = "the scan registered " + std::to_string(run.components) + " components, not " +
                          std::to_string(kPlugins);
        }
        if (!run.problem.empty()) {
            problem = run.problem;
            state.SkipWithError(problem.c_str());
            break;
        }
        state.SetIterationTime(run.scanMicroseconds / 1e6);
        wallMicroseconds += run.wallMicroseconds;
    }
    state.counters["child_wall_us"] = benchmark::Counter(wallMicroseconds, benchmark::Counter::kAvgIterations);
}
BENCHMARK(StartupScanTwentyPlugins)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(50);

} // namespace
