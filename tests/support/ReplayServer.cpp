#include "support/ReplayServer.h"

#include "support/Signals.h"

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace waxline::test {

namespace {

std::string jsonText(const std::string& s) {
    std::string out = "\"";
    for (char c : s)
        out += c == '"' || c == '\\' ? std::string("\\") + c : std::string(1, c);
    return out + "\"";
}

// A made-up but well-formed MBID, different for each name.
std::string idFor(const std::string& name) {
    unsigned long h = std::hash<std::string>{}(name);
    char id[40];
    std::snprintf(id, sizeof id, "%08lx-0000-4000-8000-%012lx", h & 0xffffffffUL,
                  (h >> 16) & 0xffffffffffffUL);
    return id;
}

} // namespace

std::string testSourceDir() {
    return WAXLINE_TESTS_DIR;
}

ReplayServer::ReplayServer(const std::string& fixtures, int busy) {
    log = fixtures + "/requests.log";
    int out[2];
    if (pipe(out) != 0)
        return;
    pid = fork();
    if (pid == 0) {
        dup2(out[1], STDOUT_FILENO);
        close(out[0]);
        close(out[1]);
        const std::string script = testSourceDir() + "/support/replay_server.py";
        const std::string busyText = std::to_string(busy);
        execlp("python3", "python3", script.c_str(), fixtures.c_str(), "--busy", busyText.c_str(),
               "--log", log.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    close(out[1]);
    FILE* in = fdopen(out[0], "r");
    char line[64] = {};
    if (in && std::fgets(line, sizeof line, in))
        std::sscanf(line, "PORT %d", &port);
    if (in)
        std::fclose(in);
}

ReplayServer::~ReplayServer() {
    if (pid > 0) {
        kill(pid, SIGTERM);
        waitpid(pid, nullptr, 0);
    }
}

std::vector<ReplayServer::Request> ReplayServer::requests() const {
    std::vector<Request> all;
    std::ifstream in(log);
    Request r;
    while (in >> r.seconds >> r.status >> r.path)
        all.push_back(r);
    return all;
}

void writeReleaseFixture(
    const std::string& fixtures, const std::string& id, const std::string& artist,
    const std::string& title, const std::string& barcode, const std::string& catalogueNumber,
    const std::vector<std::pair<std::string, std::vector<FixtureTrack>>>& media) {
    const std::string credit =
        "[{\"name\": " + jsonText(artist) +
        ", \"joinphrase\": \"\", \"artist\": {\"id\": " + jsonText(idFor(artist)) +
        ", \"name\": " + jsonText(artist) + ", \"sort-name\": " + jsonText(artist) + "}}]";
    std::ostringstream j;
    j << "{\"id\": " << jsonText(id) << ", \"title\": " << jsonText(title)
      << ", \"status\": \"Official\", \"quality\": \"normal\", \"date\": \"1979-10-05\""
      << ", \"country\": \"GB\", \"barcode\": " << jsonText(barcode)
      << ", \"artist-credit\": " << credit
      << ", \"label-info\": [{\"catalog-number\": " << jsonText(catalogueNumber)
      << ", \"label\": {\"id\": " << jsonText(idFor("label")) << ", \"name\": \"Label\"}}]"
      << ", \"cover-art-archive\": {\"artwork\": true, \"front\": true, \"back\": false, "
         "\"count\": 1, \"darkened\": false}, \"media\": [";
    for (size_t m = 0; m < media.size(); ++m) {
        j << (m ? ", " : "") << "{\"position\": " << m + 1
          << ", \"title\": \"\", \"format\": " << jsonText(media[m].first)
          << ", \"track-offset\": 0, \"track-count\": " << media[m].second.size()
          << ", \"tracks\": [";
        int position = 0;
        for (const FixtureTrack& t : media[m].second) {
            const std::string length = t.milliseconds ? std::to_string(t.milliseconds) : "null";
            const bool first = position++ == 0;
            j << (first ? "" : ", ") << "{\"id\": " << jsonText(idFor(id + t.number + "t"))
              << ", \"number\": " << jsonText(t.number) << ", \"position\": " << position
              << ", \"title\": " << jsonText(t.title) << ", \"length\": " << length
              << ", \"recording\": {\"id\": " << jsonText(idFor(id + t.number))
              << ", \"title\": " << jsonText(t.title) << ", \"length\": " << length
              << ", \"video\": false}}";
        }
        j << "]}";
    }
    j << "]}";
    std::filesystem::create_directories(fixtures + "/releases");
    std::ofstream(fixtures + "/releases/" + id + ".json") << j.str();
}

} // namespace waxline::test
