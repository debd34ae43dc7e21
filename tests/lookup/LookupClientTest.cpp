#include "lookup/LookupClient.h"
#include "lookup/MusicBrainzJson.h"

#include "support/CoreApplication.h"
#include "support/ReplayServer.h"
#include "support/Signals.h"

#include <QEventLoop>
#include <QTcpServer>
#include <QTimer>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>

namespace waxline::lookup {
namespace {

namespace fs = std::filesystem;
const char* const kNightFerry = "5f3c0a1e-8e2b-4c7d-9a61-2b7d1c9e4f10";

void ensureApp() {
    static auto app = std::make_unique<test::CoreApplication>();
}

// Runs one call of the client to its answer (at most 30 s).
template <typename T, typename Call> Answer<T> wait(Call call) {
    ensureApp();
    Answer<T> result;
    result.problem = LookupProblem::TimedOut;
    QEventLoop loop;
    QTimer::singleShot(30'000, &loop, &QEventLoop::quit);
    call([&](Answer<T> a) {
        result = std::move(a);
        loop.quit();
    });
    loop.exec();
    return result;
}

// The shipped fixture and a cassette release written here, served by a replay server.
struct Replay {
    test::TempDir dir;
    std::unique_ptr<test::ReplayServer> server;
    explicit Replay(int busy = 0) {
        const std::string shipped = test::testSourceDir() + "/lookup/replay";
        fs::copy(shipped, dir.path(), fs::copy_options::recursive);
        fs::create_directories(dir.path() + "/covers"); // git keeps no empty folder
        test::writeReleaseFixture(dir.path(), "0a0a0a0a-1111-4222-8333-444444444444",
                                  "Harbour Lights", "Night Ferry (Tape)", "5012345678917",
                                  "HLC 1001",
                                  {{"Cassette", {{"A1", "Lantern", 253000}, {"B1", "Last", 0}}}});
        server = std::make_unique<test::ReplayServer>(dir.path(), busy);
    }
    ServiceConfig config(const QString& agent = userAgentText()) const {
        ServiceConfig c;
        c.musicBrainzUrl = c.coverArtUrl = QString::fromStdString(server->url());
        c.userAgent = agent;
        return c;
    }
};

TEST(LookupClient, findsReleasesEachWay) {
    struct Row {
        QString query;
        LookupProblem problem;
        std::vector<std::string> ids;
    };
    const std::string tape = "0a0a0a0a-1111-4222-8333-444444444444";
    const std::vector<Row> rows = {
        {artistAlbumQuery("harbour lights", "Night Ferry"),
         LookupProblem::None,
         {tape, kNightFerry}},
        {barcodeQuery("5012345678900"), LookupProblem::None, {kNightFerry}},
        {catalogueNumberQuery("HLC 1001"), LookupProblem::None, {tape}},
        {artistAlbumQuery("Harbour \"Lights", ""), LookupProblem::NoMatch, {}},
    };
    Replay replay;
    ASSERT_TRUE(replay.server->running());
    LookupClient client(replay.config());
    for (const Row& row : rows) {
        const auto answer = wait<std::vector<ReleaseSummary>>(
            [&](auto done) { client.search(row.query, 10, done); });
        EXPECT_EQ(answer.problem, row.problem) << row.query.toStdString();
        std::vector<std::string> ids;
        for (const auto& r : answer.value)
            ids.push_back(r.id);
        std::sort(ids.begin(), ids.end());
        EXPECT_EQ(ids, row.ids) << row.query.toStdString();
    }
}

TEST(LookupClient, readsAListingWithItsCreditsAndLengths) {
    Replay replay;
    LookupClient client(replay.config());
    const auto answer = wait<Release>([&](auto done) { client.readRelease(kNightFerry, done); });
    ASSERT_TRUE(answer.ok());
    const Release& r = answer.value;
    EXPECT_EQ(r.summary.title, "Night Ferry");
    EXPECT_EQ(r.summary.artist, "Harbour Lights");
    EXPECT_EQ(r.summary.year(), "1979");
    EXPECT_EQ(r.summary.country, "GB");
    EXPECT_EQ(r.summary.catalogueNumber, "HL 1001");
    EXPECT_EQ(r.summary.formatText(), "12\" Vinyl");
    EXPECT_EQ(r.artistId, "a1b2c3d4-0000-4000-8000-000000000001");
    EXPECT_TRUE(r.hasFrontCover);
    ASSERT_EQ(r.media.size(), 1u);
    EXPECT_EQ(r.media[0].sideLetters(), (std::vector<std::string>{"A", "B"}));
    struct Row {
        const char* number;
        int position;
        const char* title;
        double seconds; // the track's length, else the recording's, else none
        const char* artist;
    };
    const Row rows[] = {
        {"A1", 1, "Lantern", 253, "Harbour Lights"},
        {"A2", 2, "Salt & Rope", 232, "Harbour Lights feat. Mara Voss"},
        {"A3", 3, "Tidewater", 340.5, "Harbour Lights"},
        {"B2", 5, "Caf\xC3\xA9 at Dawn", 372, "Harbour Lights"},
        {"B3", 6, "Last Light", 0, "Harbour Lights"},
    };
    for (const Row& row : rows) {
        const auto& tracks = r.media[0].tracks;
        const auto t = std::find_if(tracks.begin(), tracks.end(),
                                    [&](const ListedTrack& l) { return l.number == row.number; });
        ASSERT_NE(t, tracks.end()) << row.number;
        EXPECT_EQ(t->position, row.position);
        EXPECT_EQ(t->title, row.title);
        EXPECT_DOUBLE_EQ(t->seconds, row.seconds) << row.number;
        EXPECT_EQ(t->artist, row.artist);
        EXPECT_EQ(t->recordingId.substr(0, 8), "f0000000");
    }
}

TEST(LookupClient, keepsTheServicesRules) {
    struct Row {
        const char* what;
        int busy; // 503s the server answers first
        bool withAgent;
        LookupProblem problem;
        int sent; // requests for one search and one release
    };
    const std::vector<Row> rows = {
        {"paced", 0, true, LookupProblem::None, 2},
        {"503 waited out", 2, true, LookupProblem::None, 4},
        {"503 beyond the retries", 9, true, LookupProblem::Busy, 8},
        {"no User-Agent", 0, false, LookupProblem::ServiceError, 2},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        Replay replay(row.busy);
        LookupClient client(replay.config(row.withAgent ? userAgentText() : QString()));
        const auto search = wait<std::vector<ReleaseSummary>>(
            [&](auto done) { client.search(barcodeQuery("5012345678900"), 5, done); });
        const auto read = wait<Release>([&](auto done) { client.readRelease(kNightFerry, done); });
        EXPECT_EQ(search.problem, row.problem);
        EXPECT_EQ(read.problem, row.problem);
        EXPECT_EQ(client.requestsSent(), row.sent);
        const auto requests = replay.server->requests();
        ASSERT_EQ(static_cast<int>(requests.size()), row.sent);
        // The server answers 503 itself to anything sooner than a second after the one before
        // (less a tenth for the way there; the pacer's own test holds the second exactly).
        int refused = 0;
        for (size_t i = 0; i < requests.size(); ++i) {
            refused += requests[i].status == 503;
            if (i > 0) {
                EXPECT_GE(requests[i].seconds - requests[i - 1].seconds, 0.9);
            }
        }
        EXPECT_EQ(refused, std::min(row.busy, row.sent));
    }
}

TEST(LookupClient, fetchesTheCoverThroughTheArchivesRedirect) {
    Replay replay;
    const std::string cover = "\xFF\xD8\xFF\xE0 not really a picture";
    std::ofstream(replay.dir.path() + "/covers/" + kNightFerry + ".jpg") << cover;
    LookupClient client(replay.config());
    struct Row {
        std::string id;
        LookupProblem problem;
        std::string bytes;
        int sentAfter;
    };
    const std::vector<Row> rows = {
        {kNightFerry, LookupProblem::None, cover, 2},
        {"0a0a0a0a-1111-4222-8333-444444444444", LookupProblem::NoCover, "", 3}};
    for (const Row& row : rows) {
        const auto answer = wait<QByteArray>(
            [&](auto done) { client.fetchFrontCover(QString::fromStdString(row.id), 1200, done); });
        EXPECT_EQ(answer.problem, row.problem);
        EXPECT_EQ(answer.value.toStdString(), row.bytes);
        EXPECT_EQ(client.requestsSent(), row.sentAfter);
        EXPECT_EQ(static_cast<int>(replay.server->requests().size()), row.sentAfter);
    }
}

TEST(LookupClient, failsWithAReasonInsteadOfWaiting) {
    ensureApp();
    QTcpServer silent; // accepts and never answers
    ASSERT_TRUE(silent.listen(QHostAddress::LocalHost));
    QTcpServer closed;
    ASSERT_TRUE(closed.listen(QHostAddress::LocalHost));
    const quint16 closedPort = closed.serverPort();
    closed.close();
    struct Row {
        quint16 port;
        LookupProblem problem;
    };
    for (const Row& row : {Row{silent.serverPort(), LookupProblem::TimedOut},
                           Row{closedPort, LookupProblem::NoNetwork}}) {
        ServiceConfig c;
        c.musicBrainzUrl = "http://127.0.0.1:" + QString::number(row.port);
        c.userAgent = userAgentText();
        c.timeoutMs = 300;
        LookupClient client(c);
        const auto answer =
            wait<Release>([&](auto done) { client.readRelease(kNightFerry, done); });
        EXPECT_EQ(answer.problem, row.problem) << row.port;
    }
}

TEST(RequestPacer, waitsASecondAndAsLongAsTheServiceAsks) {
    double now = 0;
    RequestPacer pacer([&] { return now; }, 1.0);
    struct Step {
        double at;
        const char* event; // "sent", "retry N" or "" to only ask
        double delay;      // what it says then
    };
    const Step steps[] = {
        {0, "", 0},          {0, "sent", 1}, {0.4, "", 0.6}, {1.0, "", 0},     {1.2, "sent", 1},
        {1.5, "retry 5", 5}, {3, "", 3.5},   {6.5, "", 0},   {6.5, "sent", 1},
    };
    for (const Step& s : steps) {
        now = s.at;
        const std::string event = s.event;
        if (event == "sent")
            pacer.sent();
        else if (event.rfind("retry ", 0) == 0)
            pacer.retryAfter(std::stod(event.substr(6)));
        EXPECT_NEAR(pacer.delayBeforeNext(), s.delay, 1e-9) << "at " << s.at;
    }
    struct Header {
        const char* value;
        double seconds;
    };
    for (const Header& h : {Header{"3", 3}, Header{"0", 1}, Header{"3600", 60},
                            Header{"Wed, 21 Oct 2026 07:28:00 GMT", 2}, Header{"", 2}})
        EXPECT_DOUBLE_EQ(pacer.parseRetryAfter(h.value, 2), h.seconds) << h.value;
}

TEST(LookupClient, introducesItselfWithoutAnInventedAddress) {
    EXPECT_EQ(userAgentText().toStdString(), std::string("Waxline/") + WAXLINE_VERSION_TEXT);
}

} // namespace
} // namespace waxline::lookup
