#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

// The music database and cover archive replayed on 127.0.0.1 by tests/support/replay_server.py,
// from a folder of releases (releases/<id>.json) and covers (covers/<id>.jpg).
namespace waxline::test {

class ReplayServer {
public:
    // Starts the server; `busy` first database requests are answered 503.
    explicit ReplayServer(const std::string& fixtures, int busy = 0);
    ~ReplayServer(); // stops it by its pid
    ReplayServer(const ReplayServer&) = delete;
    ReplayServer& operator=(const ReplayServer&) = delete;

    bool running() const { return port > 0; }
    std::string url() const { return "http://127.0.0.1:" + std::to_string(port); }

    struct Request {
        double seconds; // the server's clock
        int status;
        std::string path;
    };
    std::vector<Request> requests() const;

private:
    pid_t pid = -1;
    int port = 0;
    std::string log;
};

// One track of a release fixture.
struct FixtureTrack {
    std::string number; // "A1"
    std::string title;
    int milliseconds; // 0: the listing gives no length
};

// Writes releases/<id>.json in the shape the service's release lookup answers with
// recordings, artist credits and labels: one medium per entry of `media`.
void writeReleaseFixture(
    const std::string& fixtures, const std::string& id, const std::string& artist,
    const std::string& title, const std::string& barcode, const std::string& catalogueNumber,
    const std::vector<std::pair<std::string, std::vector<FixtureTrack>>>& media);

// The folder of the replay server's script and the fixtures that ship with the tests.
std::string testSourceDir();

} // namespace waxline::test
