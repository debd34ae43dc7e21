#include "exporting/Mp3Encoder.h"

#include "exporting/ExportFolders.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

extern char** environ;

namespace waxline::exporting {

namespace fs = std::filesystem;

namespace {

constexpr size_t kKeptOutputBytes = 2048;

bool isExecutableFile(const std::string& path) {
    std::error_code ec;
    return fs::is_regular_file(path, ec) && ::access(path.c_str(), X_OK) == 0;
}

std::string quotedForLog(const std::string& word) {
    if (!word.empty() && word.find_first_of(" '\"\\$`!*?;&|<>()\t\n") == std::string::npos)
        return word;
    std::string quoted = "'";
    for (char c : word)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

} // namespace

std::string ffmpegProgram() {
    std::error_code ec;
    const fs::path self = fs::read_symlink("/proc/self/exe", ec);
    if (!ec) {
        const std::string beside = (self.parent_path() / "ffmpeg").string();
        if (isExecutableFile(beside))
            return beside;
    }
    const char* path = std::getenv("PATH");
    std::string dirs = path ? path : "";
    size_t start = 0;
    while (start <= dirs.size()) {
        size_t end = dirs.find(':', start);
        if (end == std::string::npos)
            end = dirs.size();
        const std::string dir = end > start ? dirs.substr(start, end - start) : ".";
        const std::string candidate = dir + "/ffmpeg";
        if (isExecutableFile(candidate))
            return candidate;
        start = end + 1;
    }
    return {};
}

EncodeResult runProgram(const std::vector<std::string>& argv) {
    EncodeResult result;
    for (const auto& word : argv) {
        if (!result.command.empty())
            result.command += ' ';
        result.command += quotedForLog(word);
    }
    if (!argv.empty())
        result.program = argv.front();
    if (argv.empty() || argv.front().empty()) {
        result.exitStatus = 127;
        result.launch = EncodeResult::Launch::NothingToRun;
        return result;
    }

    int pipeFds[2];
    // Close-on-exec, so that encoders started at the same time from other threads do not hold
    // this pipe open and delay its end.
    if (::pipe2(pipeFds, O_CLOEXEC) != 0) {
        result.exitStatus = 127;
        result.launch = EncodeResult::Launch::NoPipe;
        result.launchDetail = std::strerror(errno);
        return result;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, pipeFds[1], 1);
    posix_spawn_file_actions_adddup2(&actions, pipeFds[1], 2);

    std::vector<char*> args;
    for (const auto& word : argv)
        args.push_back(const_cast<char*>(word.c_str()));
    args.push_back(nullptr);

    pid_t pid = -1;
    const int spawnError =
        ::posix_spawn(&pid, argv.front().c_str(), &actions, nullptr, args.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(pipeFds[1]);
    if (spawnError != 0) {
        ::close(pipeFds[0]);
        result.exitStatus = 127;
        result.launch = EncodeResult::Launch::NotStarted;
        result.launchDetail = std::strerror(spawnError);
        return result;
    }

    char chunk[4096];
    for (;;) {
        const ssize_t n = ::read(pipeFds[0], chunk, sizeof chunk);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        result.errorOutput.append(chunk, static_cast<size_t>(n));
        if (result.errorOutput.size() > 2 * kKeptOutputBytes)
            result.errorOutput.erase(0, result.errorOutput.size() - kKeptOutputBytes);
    }
    ::close(pipeFds[0]);

    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFEXITED(status))
        result.exitStatus = WEXITSTATUS(status);
    else if (WIFSIGNALED(status))
        result.exitStatus = 128 + WTERMSIG(status);
    if (result.errorOutput.size() > kKeptOutputBytes)
        result.errorOutput.erase(0, result.errorOutput.size() - kKeptOutputBytes);
    while (!result.errorOutput.empty() && result.errorOutput.back() == '\n')
        result.errorOutput.pop_back();
    return result;
}

std::vector<std::string> encoderArguments(const std::string& program, const std::string& inputPath,
                                          const std::string& outputPath,
                                          const EncoderDescription& encoding) {
    // The input is a file name argument, never a protocol or option: "file:" keeps a name
    // such as "-x.wav" or "a:b.wav" a plain path.
    std::vector<std::string> argv{program, "-nostdin", "-hide_banner", "-loglevel",
                                  "error", "-y",       "-i",           "file:" + inputPath};
    argv.insert(argv.end(), encoding.codecArguments.begin(), encoding.codecArguments.end());
    argv.push_back("file:" + outputPath);
    return argv;
}

EncodeResult encodeFile(const std::string& inputPath, const std::string& outputPath,
                        const EncoderDescription& encoding) {
    const std::string program = ffmpegProgram();
    if (program.empty()) {
        EncodeResult result;
        result.exitStatus = 127;
        result.command = "ffmpeg -i " + quotedForLog(inputPath);
        for (const auto& word : encoding.codecArguments)
            result.command += " " + word;
        result.command += " " + quotedForLog(outputPath);
        result.launch = EncodeResult::Launch::NotFound;
        return result;
    }
    return runProgram(encoderArguments(program, inputPath, outputPath, encoding));
}

EncodeResult encodeToMp3(const std::string& inputPath, const std::string& mp3Path) {
    return encodeFile(inputPath, mp3Path, mp3Encoding());
}

ExportProblem encoderProblem(const EncodeResult& result) {
    using Kind = ExportProblem::Kind;
    ExportProblem problem;
    problem.command = result.command;
    problem.status = result.exitStatus;
    switch (result.launch) {
    case EncodeResult::Launch::Ran:
        if (result.ok())
            return {};
        problem.kind = Kind::EncoderFailed;
        problem.detail = result.errorOutput;
        break;
    case EncodeResult::Launch::NothingToRun:
        problem.kind = Kind::EncoderNothingToRun;
        break;
    case EncodeResult::Launch::NoPipe:
        problem.kind = Kind::EncoderNoPipe;
        problem.detail = result.launchDetail;
        break;
    case EncodeResult::Launch::NotStarted:
        problem.kind = Kind::EncoderNotStarted;
        problem.path = result.program;
        problem.detail = result.launchDetail;
        break;
    case EncodeResult::Launch::NotFound:
        problem.kind = Kind::EncoderNotFound;
        break;
    }
    return problem;
}

EncodeResult encodeFileToMp3(const std::string& wavPath) {
    return encodeToMp3(wavPath, encodedPathFor(wavPath, mp3Encoding()));
}

} // namespace waxline::exporting
