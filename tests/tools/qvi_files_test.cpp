// qvi and the user's files: where a result is written (regular files,
// links, devices, FIFOs, an input named as output), which inputs it reads
// and how it says why it cannot, temporary files left by no run, and
// standard input.

#include "tests/tools/qvi_harness.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <termios.h>
#include <thread>

namespace {

using namespace qvi_test;

using QviDestination = QviTest;

struct stat Status(const std::string& path)
{
    struct stat info {};
    EXPECT_EQ(0, lstat(path.c_str(), &info)) << path;
    return info;
}

// The names in a directory.
Strings Names(const std::string& directory)
{
    Strings names;
    for (const auto& entry : fs::directory_iterator(directory)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

// A regular file is replaced as a whole: the old file, still open, keeps
// its content; the new one has the old one's mode; nothing else is left in
// the directory.
TEST_F(QviDestination, ARegularFileIsReplacedAtomicallyKeepingItsMode)
{
    const std::string path = Put("result.cgats", "older content\n");
    ASSERT_EQ(0, chmod(path.c_str(), 0600));
    const int older = open(path.c_str(), O_RDONLY);
    ASSERT_GE(older, 0);
    const ino_t before = Status(path).st_ino;
    const Outcome outcome = Qvi({"color", kChart, "-o", path});
    EXPECT_SUCCESS(outcome);
    EXPECT_EQ("", outcome.out);
    EXPECT_EQ(Qvi({"color", kChart}).out, ReadFile(path));
    const struct stat after = Status(path);
    EXPECT_TRUE(S_ISREG(after.st_mode));
    EXPECT_EQ(0600u, after.st_mode & 07777u);
    EXPECT_NE(before, after.st_ino);
    char buffer[64] = {};
    EXPECT_EQ(14, read(older, buffer, sizeof buffer - 1));
    EXPECT_EQ("older content\n", std::string(buffer));
    close(older);
    EXPECT_EQ((Strings{"result.cgats"}), Names(dir));
    // Another mode is kept as well.
    ASSERT_EQ(0, chmod(path.c_str(), 0640));
    EXPECT_SUCCESS(Qvi({"color", kChart, "-o", path, "--format", "csv"}));
    EXPECT_EQ(0640u, Status(path).st_mode & 07777u);
}

TEST_F(QviDestination, ANewFileGetsTheModeOfTheUmask)
{
    const mode_t mask = umask(0);
    umask(mask);
    const std::string path = Path("new.cgats");
    EXPECT_SUCCESS(Qvi({"color", kChart, "--output", path}));
    EXPECT_EQ(0666u & ~static_cast<unsigned>(mask), Status(path).st_mode & 07777u);
    EXPECT_EQ((Strings{"new.cgats"}), Names(dir));
}

// A symbolic link is written through: the link stays, its target receives
// the result.
TEST_F(QviDestination, ALinkIsWrittenThrough)
{
    const std::string target = Put("target.cgats", "older content\n");
    const std::string link = Path("link.cgats");
    ASSERT_EQ(0, symlink("target.cgats", link.c_str()));
    EXPECT_SUCCESS(Qvi({"color", kChart, "-o", link}));
    EXPECT_TRUE(S_ISLNK(Status(link).st_mode));
    EXPECT_EQ(Qvi({"color", kChart}).out, ReadFile(target));
    // A link whose target does not exist yet creates it.
    const std::string dangling = Path("dangling.cgats");
    ASSERT_EQ(0, symlink("made.cgats", dangling.c_str()));
    EXPECT_SUCCESS(Qvi({"color", kChart, "-o", dangling}));
    EXPECT_TRUE(S_ISLNK(Status(dangling).st_mode));
    EXPECT_EQ(Qvi({"color", kChart}).out, ReadFile(Path("made.cgats")));
    EXPECT_EQ((Strings{"dangling.cgats", "link.cgats", "made.cgats", "target.cgats"}), Names(dir));
}

// A FIFO is written to, never replaced.
TEST_F(QviDestination, AFifoIsWrittenThrough)
{
    const std::string fifo = Path("pipe");
    ASSERT_EQ(0, mkfifo(fifo.c_str(), 0600));
    // The reader is open before qvi runs; the result (a few kilobytes) fits
    // the pipe's buffer, so qvi never waits for it to be read.
    const int reader = open(fifo.c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    const Outcome outcome = Qvi({"color", kChart, "-o", fifo});
    EXPECT_SUCCESS(outcome);
    std::string received;
    char buffer[4096];
    for (ssize_t got; (got = read(reader, buffer, sizeof buffer)) > 0;) {
        received.append(buffer, static_cast<std::size_t>(got));
    }
    close(reader);
    EXPECT_EQ(Qvi({"color", kChart}).out, received);
    EXPECT_TRUE(S_ISFIFO(Status(fifo).st_mode));
    EXPECT_EQ((Strings{"pipe"}), Names(dir));
}

// A device is written to, never replaced: a pseudo terminal of the test's
// own stands for one.
TEST_F(QviDestination, ADeviceIsWrittenThrough)
{
    int master = -1;
    int slave = -1;
    char name[256] = {};
    ASSERT_EQ(0, openpty(&master, &slave, name, nullptr, nullptr));
    struct termios raw {};
    ASSERT_EQ(0, tcgetattr(slave, &raw));
    cfmakeraw(&raw);
    ASSERT_EQ(0, tcsetattr(slave, TCSANOW, &raw));
    const Outcome outcome = Qvi({"color", kChart, "--format", "csv", "-o", name});
    EXPECT_SUCCESS(outcome);
    const int flags = fcntl(master, F_GETFL);
    fcntl(master, F_SETFL, flags | O_NONBLOCK);
    std::string received;
    char buffer[4096];
    for (ssize_t got; (got = read(master, buffer, sizeof buffer)) > 0;) {
        received.append(buffer, static_cast<std::size_t>(got));
    }
    EXPECT_EQ(Qvi({"color", kChart, "--format", "csv"}).out, received);
    EXPECT_TRUE(S_ISCHR(Status(name).st_mode));
    close(slave);
    close(master);
}

// An output that is one of the inputs is refused before anything is read:
// by its name, through a link, through another name of the same file, or as
// the file behind standard input.
TEST_F(QviDestination, AnInputIsNeverTheOutput)
{
    const std::string input = Put("chart.cgats", ReadFile(SamplePath(kChart)));
    const std::string original = ReadFile(input);
    ASSERT_EQ(0, symlink("chart.cgats", Path("link.cgats").c_str()));
    ASSERT_EQ(0, link(input.c_str(), Path("hard.cgats").c_str()));
    for (const Strings& arguments :
         {Strings{"color", "chart.cgats", "-o", "chart.cgats"}, Strings{"color", "chart.cgats", "-o", "link.cgats"},
          Strings{"color", "chart.cgats", "-o", "hard.cgats"}, Strings{"density", "chart.cgats", "-o", "chart.cgats"},
          Strings{"cct", "chart.cgats", "-o", "./chart.cgats"},
          Strings{"delta-e", SamplePath(kOtherChart), "chart.cgats", "-o", "chart.cgats"},
          Strings{"delta-e", "chart.cgats", SamplePath(kOtherChart), "--output", "chart.cgats"},
          Strings{"delta-e", "chart.cgats", SamplePath(kOtherChart), "--summary", "chart.cgats"}}) {
        SCOPED_TRACE(arguments[0] + " " + arguments.back());
        const Outcome outcome = Qvi(arguments, dir);
        EXPECT_FAILURE(outcome, 2);
        EXPECT_TRUE(Contains(outcome.err, "is the input file")) << outcome;
        EXPECT_EQ(original, ReadFile(input));
    }
    const Outcome fromStandardInput = Qvi({"color", "-", "-o", "chart.cgats"}, dir, input);
    EXPECT_FAILURE(fromStandardInput, 2);
    EXPECT_EQ("qvi: chart.cgats: is the input file standard input; --output must name another file, or the input "
              "would be lost\n",
              fromStandardInput.err);
    EXPECT_EQ(original, ReadFile(input));
    EXPECT_EQ((Strings{"chart.cgats", "hard.cgats", "link.cgats"}), Names(dir));
}

// Makes the calling process (and what it executes) unable to pass over
// file permissions, as any unprivileged user is: a root process gives up
// the capabilities that do it, or, where it may not, becomes the user
// nobody.
bool WithoutPrivileges()
{
    if (geteuid() != 0) {
        return true;
    }
    bool dropped = true;
    for (int capability : {CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH, CAP_FOWNER}) {
        dropped = dropped && prctl(PR_CAPBSET_DROP, capability, 0, 0, 0) == 0;
    }
    return dropped || (setgid(65534) == 0 && setuid(65534) == 0);
}

// Runs qvi as a process without privileges over file permissions;
// standard output is dropped, standard error caught.
Outcome QviWithoutPrivileges(const Strings& arguments)
{
    Outcome outcome;
    std::string errPath;
    const int err = TemporaryFile(errPath);
    if (err < 0 || fchmod(err, 0666) != 0) {
        ADD_FAILURE() << "cannot prepare standard error";
        return outcome;
    }
    const pid_t child = fork();
    if (child == 0) {
        const int null = open("/dev/null", O_RDWR);
        if (!WithoutPrivileges() || dup2(null, STDIN_FILENO) < 0 || dup2(null, STDOUT_FILENO) < 0 ||
            dup2(err, STDERR_FILENO) < 0) {
            _exit(126);
        }
        Strings words;
        std::vector<char*> argv = QviArgv(words, arguments);
        execv(kQvi.c_str(), argv.data());
        _exit(127);
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    close(err);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    outcome.err = ReadFile(errPath);
    std::remove(errPath.c_str());
    return outcome;
}

// A file its user may not write is left as it is, though the directory
// would let a new file take its name.
TEST_F(QviDestination, AFileClosedToWritingIsRefused)
{
    const std::string path = Put("kept.cgats", "kept content\n");
    ASSERT_EQ(0, chmod(path.c_str(), 0444));
    ASSERT_EQ(0, chmod(dir.c_str(), 0777));
    const Outcome outcome = QviWithoutPrivileges({"color", SamplePath(kChart), "-o", path});
    EXPECT_EQ(2, outcome.status) << outcome;
    EXPECT_EQ("qvi: " + path + ": cannot write the file: Permission denied\n", outcome.err);
    EXPECT_EQ("kept content\n", ReadFile(path));
    EXPECT_EQ((Strings{"kept.cgats"}), Names(dir));
}

// A directory closed to new files: a new output is refused before anything
// is read; an existing file that may be written is written in place, since
// no temporary file can stand beside it.
TEST_F(QviDestination, ADirectoryClosedToNewFiles)
{
    const std::string path = Put("open.cgats", "older content\n");
    ASSERT_EQ(0, chmod(path.c_str(), 0666));
    const ino_t before = Status(path).st_ino;
    ASSERT_EQ(0, chmod(dir.c_str(), 0555));
    const Outcome created = QviWithoutPrivileges({"color", Path("absent.cgats"), "-o", Path("new.cgats")});
    EXPECT_EQ(2, created.status) << created;
    EXPECT_EQ("qvi: " + Path("new.cgats") + ": cannot write the file: " + dir + ": Permission denied\n", created.err);
    const Outcome written = QviWithoutPrivileges({"color", SamplePath(kChart), "-o", path, "-q"});
    EXPECT_EQ(0, written.status) << written;
    EXPECT_EQ("", written.err);
    ASSERT_EQ(0, chmod(dir.c_str(), 0700));
    EXPECT_EQ(Qvi({"color", SamplePath(kChart)}).out, ReadFile(path));
    EXPECT_EQ(before, Status(path).st_ino);
    EXPECT_EQ((Strings{"open.cgats"}), Names(dir));
}

TEST_F(QviDestination, ADirectoryIsRefused)
{
    fs::create_directory(Path("results"));
    const Outcome outcome = Qvi({"color", kChart, "-o", Path("results")});
    EXPECT_FAILURE(outcome, 2);
    EXPECT_EQ("qvi: " + Path("results") + ": is a directory; --output needs a file name\n", outcome.err);
}

TEST_F(QviDestination, AMissingDirectoryIsRefusedBeforeAnythingIsRead)
{
    const Outcome outcome = Qvi({"color", "absent.cgats", "-o", Path("no/such/result.cgats")}, dir);
    EXPECT_FAILURE(outcome, 2);
    EXPECT_EQ("qvi: " + Path("no/such/result.cgats") + ": cannot write the file: " + Path("no/such") +
                  ": No such file or directory\n",
              outcome.err);
}

TEST_F(QviDestination, DashIsStandardOutput)
{
    const Outcome outcome = Qvi({"color", kChart, "-o", "-"});
    EXPECT_SUCCESS(outcome);
    EXPECT_EQ(Qvi({"color", kChart}).out, outcome.out);
    EXPECT_TRUE(Names(dir).empty());
}

// The summary of delta-e where CSV does not hold it: standard error, or a
// file of its own.
TEST_F(QviDestination, TheSummaryOfACsvRun)
{
    const Outcome csv = Qvi({"delta-e", kChart, kOtherChart, "--format", "csv"});
    EXPECT_EQ(0, csv.status) << csv;
    const Csv table = ParseCsv(csv.out);
    EXPECT_TRUE(table.summary.empty());
    EXPECT_EQ(25u, table.lines.size());
    const auto summary = SummaryLines(csv.err);
    EXPECT_EQ("24", summary.at("samples"));
    EXPECT_EQ("1 13 15 19", summary.at("exceeding_ids"));
    const std::string file = Path("summary.txt");
    const Outcome toFile = Qvi({"delta-e", kChart, kOtherChart, "--format", "csv", "--summary", file});
    EXPECT_SUCCESS(toFile);
    EXPECT_EQ(csv.out, toFile.out);
    EXPECT_EQ(summary, SummaryLines(ReadFile(file)));
    // With any other form the summary stays inside and the file has it too.
    const Outcome json = Qvi({"delta-e", kChart, kOtherChart, "--format", "json", "--summary", file});
    EXPECT_SUCCESS(json);
    EXPECT_EQ(summary, SummaryLines(ReadFile(file)));
    EXPECT_FAILURE(Qvi({"delta-e", kChart, kOtherChart, "--summary", file, "-o", file}), 2);
}

// ============================================================ input files

using QviInputFiles = QviTest;

TEST_F(QviInputFiles, EachUnreadableInputHasItsOwnMessage)
{
    fs::create_directory(Path("folder"));
    Put("plain.cgats", ReadFile(SamplePath(kChart)));
    const std::vector<std::pair<Strings, std::string>> cases = {
        {{"color", "folder"}, "qvi: folder: is a directory, not a measurement file\n"},
        {{"color", "absent.cgats"}, "qvi: absent.cgats: cannot open the file: No such file or directory\n"},
        {{"color", "plain.cgats/x"}, "qvi: plain.cgats/x: cannot open the file: Not a directory\n"},
        {{"density", "folder", "--paper-white", "1"}, "qvi: folder: is a directory, not a measurement file\n"},
        {{"delta-e", "plain.cgats", "folder"}, "qvi: folder: is a directory, not a measurement file\n"}};
    for (const auto& [arguments, expected] : cases) {
        SCOPED_TRACE(arguments[1]);
        const Outcome outcome = Qvi(arguments, dir);
        EXPECT_FAILURE(outcome, 2);
        EXPECT_EQ(expected, outcome.err);
    }
}

TEST_F(QviInputFiles, EmptyStandardInput)
{
    Put("empty", "");
    const Outcome outcome = Qvi({"color", "-"}, dir, Path("empty"));
    EXPECT_FAILURE(outcome, 2);
    EXPECT_EQ("qvi: <stdin>: standard input is empty (give a file name, or pipe a CGATS file in)\n", outcome.err);
    const Outcome device = Qvi({"color", "-"}, dir, "/dev/null");
    EXPECT_FAILURE(device, 2);
    EXPECT_EQ(outcome.err, device.err);
    // An empty named file is something else.
    const Outcome file = Qvi({"color", "empty"}, dir);
    EXPECT_FAILURE(file, 2);
    EXPECT_EQ("qvi: empty: not a CGATS file: it is empty\n", file.err);
}

TEST_F(QviInputFiles, ATemporaryDirectoryThatDoesNotExist)
{
    for (const Strings& arguments : {Strings{"color", SamplePath(kChart)}, Strings{"color", "-"}}) {
        const Outcome outcome = Qvi(arguments, dir, SamplePath(kChart), {"TMPDIR=" + Path("absent")});
        EXPECT_FAILURE(outcome, 2);
        EXPECT_EQ("qvi: " + Path("absent") +
                      ": cannot create a temporary file here (TMPDIR): No such file or directory\n",
                  BeyondNotes(outcome.err));
    }
}

TEST_F(QviInputFiles, AByteOrderMarkIsAccepted)
{
    Put("marked.cgats", "\xEF\xBB\xBF" + ReadFile(SamplePath(kChart)));
    const Outcome outcome = Qvi({"color", "marked.cgats", "-q"}, dir);
    EXPECT_SILENT_SUCCESS(outcome);
    const std::string plain = Qvi({"color", kChart}).out;
    EXPECT_EQ(plain.substr(plain.find("COLOR_SPACE")), outcome.out.substr(outcome.out.find("COLOR_SPACE")));
}

// A tab inside a quoted sample name is read and written back in every form:
// quoted in CGATS and CSV, escaped in JSON, shown as \t in a table.
TEST_F(QviInputFiles, ATabInASampleName)
{
    std::string text = ReadFile(SamplePath(kChart));
    const std::size_t at = text.find("\"dark skin\"");
    ASSERT_NE(std::string::npos, at);
    text.replace(at, 11, "\"dark\tskin\"");
    Put("tab.cgats", text);
    const Outcome cgats = Qvi({"color", "tab.cgats"}, dir);
    EXPECT_SUCCESS(cgats);
    EXPECT_EQ("dark\tskin", ParseCgats(cgats.out).Value(0, "SAMPLE_NAME"));
    const Outcome csv = Qvi({"color", "tab.cgats", "--format", "csv"}, dir);
    EXPECT_SUCCESS(csv);
    EXPECT_EQ("dark\tskin", ParseCsv(csv.out).lines.at(1).at(1));
    EXPECT_TRUE(Contains(csv.out, "\n1,\"dark\tskin\",")) << csv.out;
    const Outcome json = Qvi({"color", "tab.cgats", "--format", "json"}, dir);
    EXPECT_SUCCESS(json);
    EXPECT_EQ("dark\tskin", ParseJson(json.out)["rows"].items.at(0)["SAMPLE_NAME"].text);
    const Outcome table = Qvi({"color", "tab.cgats", "--format", "table"}, dir);
    EXPECT_SUCCESS(table);
    EXPECT_EQ("dark\\tskin", Cells(Lines(table.out).at(1)).at(1));
    // Names with a backslash pass unchanged.
    text.replace(at, 11, "\"dark\\\\skin\"");
    Put("backslash.cgats", text);
    EXPECT_EQ("dark\\\\skin",
              ParseCsv(Qvi({"color", "backslash.cgats", "--format", "csv"}, dir).out).lines.at(1).at(1));
}

// ======================================================== signals

using QviSignals = QviTest;

// Starts qvi with `arguments` in `dir`, standard input from `input`, the
// temporary directory `temporary`; returns its process id.
pid_t Start(const Strings& arguments, const std::string& directory, int input, const std::string& temporary)
{
    Strings words;
    std::vector<char*> argv = QviArgv(words, arguments);
    const pid_t child = fork();
    if (child == 0) {
        setenv("TMPDIR", temporary.c_str(), 1);
        const int null = open("/dev/null", O_WRONLY);
        if (chdir(directory.c_str()) != 0 || dup2(input, STDIN_FILENO) < 0 || dup2(null, STDOUT_FILENO) < 0 ||
            dup2(null, STDERR_FILENO) < 0) {
            _exit(126);
        }
        execv(kQvi.c_str(), argv.data());
        _exit(127);
    }
    return child;
}

// Waits (at most a minute, in steps of 10 ms) until `directory` holds at
// least `count` entries.
bool WaitForEntries(const std::string& directory, std::size_t count)
{
    for (int step = 0; step < 6000; ++step) {
        if (Names(directory).size() >= count) {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

int EndedBy(pid_t child)
{
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFSIGNALED(status) ? WTERMSIG(status) : -1;
}

// A run ended by SIGINT or SIGTERM while it reads standard input leaves no
// temporary file behind, and ends by that signal.
TEST_F(QviSignals, AnInterruptedReadingLeavesNoTemporaryFile)
{
    for (int signal : {SIGINT, SIGTERM, SIGHUP}) {
        SCOPED_TRACE(signal);
        const std::string temporary = Path("tmp" + std::to_string(signal));
        fs::create_directory(temporary);
        int pipeEnds[2];
        ASSERT_EQ(0, pipe(pipeEnds));
        const pid_t child = Start({"color", "-"}, dir, pipeEnds[0], temporary);
        close(pipeEnds[0]);
        // Part of a file, and the pipe stays open: qvi waits for the rest
        // with its copy of standard input made.
        const std::string start = "CGATS.17\nBEGIN_DATA_FORMAT\n";
        ASSERT_EQ(static_cast<ssize_t>(start.size()), write(pipeEnds[1], start.data(), start.size()));
        ASSERT_TRUE(WaitForEntries(temporary, 1));
        kill(child, signal);
        EXPECT_EQ(signal, EndedBy(child));
        close(pipeEnds[1]);
        EXPECT_TRUE(Names(temporary).empty()) << Names(temporary).front();
    }
}

// A run ended while it waits to write its result (a FIFO nobody reads)
// leaves neither the collected results nor a half-written output.
TEST_F(QviSignals, AnInterruptedWritingLeavesNoTemporaryFile)
{
    const std::string temporary = Path("tmp");
    fs::create_directory(temporary);
    const std::string fifo = Path("pipe");
    ASSERT_EQ(0, mkfifo(fifo.c_str(), 0600));
    const int input = open("/dev/null", O_RDONLY);
    const pid_t child = Start({"delta-e", SamplePath(kChart), SamplePath(kOtherChart), "-o", fifo}, dir, input,
                              temporary);
    close(input);
    // The collected rows wait in a temporary file until the FIFO has a
    // reader; the run is ended wherever it is by then.
    ASSERT_TRUE(WaitForEntries(temporary, 1));
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    kill(child, SIGTERM);
    EXPECT_EQ(SIGTERM, EndedBy(child));
    EXPECT_TRUE(Names(temporary).empty());
    EXPECT_EQ((Strings{"pipe", "tmp"}), Names(dir));
}

// A reader that goes away before the result is written ends the run by
// SIGPIPE, and nothing is left behind.
TEST_F(QviSignals, ABrokenPipeLeavesNoTemporaryFile)
{
    const std::string temporary = Path("tmp");
    fs::create_directory(temporary);
    int pipeEnds[2];
    ASSERT_EQ(0, pipe(pipeEnds));
    const pid_t child = fork();
    if (child == 0) {
        setenv("TMPDIR", temporary.c_str(), 1);
        signal(SIGPIPE, SIG_DFL);
        const int null = open("/dev/null", O_RDWR);
        close(pipeEnds[0]);
        if (dup2(null, STDIN_FILENO) < 0 || dup2(pipeEnds[1], STDOUT_FILENO) < 0 || dup2(null, STDERR_FILENO) < 0) {
            _exit(126);
        }
        Strings words;
        std::vector<char*> argv = QviArgv(words, {"color", SamplePath(kChips)});
        execv(kQvi.c_str(), argv.data());
        _exit(127);
    }
    // Nobody reads: the first write of the result breaks the pipe.
    close(pipeEnds[0]);
    close(pipeEnds[1]);
    EXPECT_EQ(SIGPIPE, EndedBy(child));
    EXPECT_TRUE(Names(temporary).empty());
}

// ======================================================== standard input

using QviStandardInputSpeed = QviTest;

// The processor time of a run, from the kernel's accounting of the child.
double ProcessorSeconds(const Strings& arguments, const std::string& directory, const std::string& input,
                        bool throughAPipe)
{
    Strings words;
    std::vector<char*> argv = QviArgv(words, arguments);
    int pipeEnds[2] = {-1, -1};
    if (throughAPipe && pipe(pipeEnds) != 0) {
        return -1.0;
    }
    const pid_t child = fork();
    if (child == 0) {
        const int in = throughAPipe ? pipeEnds[0] : open(input.c_str(), O_RDONLY);
        const int null = open("/dev/null", O_WRONLY);
        if (chdir(directory.c_str()) != 0 || dup2(in, STDIN_FILENO) < 0 || dup2(null, STDOUT_FILENO) < 0 ||
            dup2(null, STDERR_FILENO) < 0) {
            _exit(126);
        }
        if (throughAPipe) {
            close(pipeEnds[1]);
        }
        execv(kQvi.c_str(), argv.data());
        _exit(127);
    }
    if (throughAPipe) {
        close(pipeEnds[0]);
        const std::string text = ReadFile(input);
        for (std::size_t done = 0; done < text.size();) {
            const ssize_t put = write(pipeEnds[1], text.data() + done, text.size() - done);
            if (put <= 0) {
                break;
            }
            done += static_cast<std::size_t>(put);
        }
        close(pipeEnds[1]);
    }
    int status = 0;
    struct rusage usage {};
    while (wait4(child, &status, 0, &usage) < 0 && errno == EINTR) {
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        return -1.0;
    }
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

// Reading standard input costs what reading the file costs: a file given as
// standard input is read in place, a pipe is copied in large blocks. The
// bound is on processor time (not wall time, which a loaded machine
// stretches), taking the least of three runs; reading standard input one
// character at a time cost three times as much.
TEST_F(QviStandardInputSpeed, StandardInputIsReadAsFastAsAFile)
{
    std::string text = "CGATS.17\nBEGIN_DATA_FORMAT\nSAMPLE_ID";
    for (int wavelength = 380; wavelength <= 730; wavelength += 10) {
        text += " SPECTRAL_NM" + std::to_string(wavelength);
    }
    text += "\nEND_DATA_FORMAT\nBEGIN_DATA\n";
    for (int sample = 1; sample <= 60000; ++sample) {
        text += std::to_string(sample);
        for (int point = 0; point < 36; ++point) {
            text += " 0." + std::to_string(100000 + (sample * 37 + point * 11) % 800000);
        }
        text += '\n';
    }
    const std::string file = Put("many.cgats", text + "END_DATA\n");
    const auto least = [&](const Strings& arguments, bool throughAPipe) {
        double best = 1e9;
        for (int run = 0; run < 3; ++run) {
            const double seconds = ProcessorSeconds(arguments, dir, file, throughAPipe);
            EXPECT_GE(seconds, 0.0);
            best = std::min(best, seconds);
        }
        return best;
    };
    const double named = least({"color", "many.cgats"}, false);
    const double redirected = least({"color", "-"}, false);
    const double piped = least({"color", "-"}, true);
    EXPECT_LT(redirected, 1.5 * named + 0.05) << named << " " << redirected;
    EXPECT_LT(piped, 1.5 * named + 0.05) << named << " " << piped;
}

} // namespace
