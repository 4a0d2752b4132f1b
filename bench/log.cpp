/// One log line, and one that is not wanted: a ready line through stdio, spdlog, ours.

#include "utils/Log.h"
#include "utils/LogSetup.h"

#include <benchmark/benchmark.h>
#include <filesystem>
#include <memory>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>
#include <string>
#include <unistd.h>

namespace {

using namespace quillmark;

/// So many lines a run stay far below the size at which a log file is replaced, and leave the memory disk alone.
constexpr benchmark::IterationCount kLines = 200'000;
/// As long as the others' lines.
constexpr char kReadyLine[] = "2024-03-05 14:15:02.1234 bench_log[12345] (nrm) [0x3039] The catalogue was read\n";

std::string logFile(const char *name) {
    return std::filesystem::temp_directory_path() / (std::string("quillmark-bench-") + name + ".log");
}

/// An open file, emptied first; it is removed afterwards.
class EmptyFile {
public:
    explicit EmptyFile(const char *name) : m_path(logFile(name)) { std::filesystem::remove(m_path); }
    EmptyFile(const EmptyFile &) = delete;
    EmptyFile &operator=(const EmptyFile &) = delete;
    ~EmptyFile() { std::filesystem::remove(m_path); }
    const std::string &path() const { return m_path; }

private:
    const std::string m_path;
};

/// Our logger on a fresh file, at the level that users have.
class OurLog {
public:
    OurLog() { initLogging2("normal", "error", m_file.path()); }
    OurLog(const OurLog &) = delete;
    OurLog &operator=(const OurLog &) = delete;
    ~OurLog() { _initLogging(std::nullopt); }

private:
    EmptyFile m_file{"ours"};
};

/// The peer with the same parts in its line: time, process, level, thread, message.
class PeerLog {
public:
    PeerLog() : m_logger("bench_log", std::make_shared<spdlog::sinks::basic_file_sink_mt>(m_file.path())) {
        m_logger.set_pattern("%Y-%m-%d %H:%M:%S.%e %n[%P] (%l) [0x%t] %v");
    }
    spdlog::logger &logger() { return m_logger; }

private:
    EmptyFile m_file{"peer"};
    spdlog::logger m_logger;
};

void lineFloor(benchmark::State &state) {
    const EmptyFile file("floor");
    const std::unique_ptr<FILE, int (*)(FILE *)> stream(std::fopen(file.path().c_str(), "a"), std::fclose);
    for ([[maybe_unused]] auto run : state) {
        std::fwrite(kReadyLine, 1, sizeof kReadyLine - 1, stream.get());
    }
}

void constantLinePeer(benchmark::State &state) {
    PeerLog peer;
    for ([[maybe_unused]] auto run : state) {
        peer.logger().info("The catalogue was read");
    }
}
void constantLineOurs(benchmark::State &state) {
    const OurLog ours;
    for ([[maybe_unused]] auto run : state) {
        logNormal("The catalogue was read");
    }
}

void argumentsLinePeer(benchmark::State &state) {
    PeerLog peer;
    int number = 0;
    const std::string text = "/Applications/Quillmark.app";
    for ([[maybe_unused]] auto run : state) {
        peer.logger().info("Item {} of {} is at {}", ++number, kLines, text);
    }
}
void argumentsLineOurs(benchmark::State &state) {
    const OurLog ours;
    int number = 0;
    const std::string text = "/Applications/Quillmark.app";
    for ([[maybe_unused]] auto run : state) {
        logNormal("Item %d of %d is at %@", ++number, kLines, text);
    }
}

void unwantedFloor(benchmark::State &state) {
    int number = 0;
    for ([[maybe_unused]] auto run : state) {
        benchmark::DoNotOptimize(++number);
    }
}
void unwantedPeer(benchmark::State &state) {
    PeerLog peer;
    int number = 0;
    for ([[maybe_unused]] auto run : state) {
        benchmark::DoNotOptimize(++number);
        peer.logger().debug("Item {}", number);
    }
}
void unwantedOurs(benchmark::State &state) {
    const OurLog ours;
    int number = 0;
    for ([[maybe_unused]] auto run : state) {
        benchmark::DoNotOptimize(++number);
        logVerbose("Item %d", number);
    }
}

BENCHMARK(lineFloor)->Name("constant line/floor")->Iterations(kLines);
BENCHMARK(constantLinePeer)->Name("constant line/peer")->Iterations(kLines);
BENCHMARK(constantLineOurs)->Name("constant line/ours")->Iterations(kLines);
BENCHMARK(lineFloor)->Name("line with arguments/floor")->Iterations(kLines);
BENCHMARK(argumentsLinePeer)->Name("line with arguments/peer")->Iterations(kLines);
BENCHMARK(argumentsLineOurs)->Name("line with arguments/ours")->Iterations(kLines);
BENCHMARK(unwantedFloor)->Name("unwanted line/floor")->Iterations(100 * kLines);
BENCHMARK(unwantedPeer)->Name("unwanted line/peer")->Iterations(10 * kLines);
BENCHMARK(unwantedOurs)->Name("unwanted line/ours")->Iterations(100 * kLines);

} // namespace
