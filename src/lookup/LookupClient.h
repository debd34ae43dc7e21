#pragma once

#include "lookup/Listing.h"
#include "lookup/LookupProblem.h"
#include "lookup/RequestPacer.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QUrl>

#include <deque>
#include <functional>
#include <vector>

class QNetworkAccessManager;
class QNetworkReply;

namespace waxline::lookup {

// Where the services are and how we introduce ourselves.
struct ServiceConfig {
    QString musicBrainzUrl; // up to and without "/ws/2"
    QString coverArtUrl;
    QString userAgent;
    int timeoutMs = 10'000;
    int busyRetries = 3; // 503s waited out before giving up

    // The public services, or WAXLINE_MUSICBRAINZ_URL and WAXLINE_COVERART_URL when set.
    static ServiceConfig fromEnvironment();
};

// "Waxline/<version>", followed by " ( <url> )" when the build names a project URL.
QString userAgentText();

template <typename T> struct Answer {
    LookupProblem problem = LookupProblem::None;
    int httpStatus = 0; // the service's status when it answered with an error
    T value{};
    bool ok() const { return problem == LookupProblem::None; }
};

// Asks the music database and the cover archive, one request at a time and at most one a
// second, on the thread that owns it (the main thread); every answer comes back through the
// callback from the event loop, so nothing waits in the caller and nothing blocks a window.
class LookupClient : public QObject {
public:
    explicit LookupClient(ServiceConfig config, RequestPacer::Clock clock = steadySeconds,
                          QObject* parent = nullptr);
    ~LookupClient() override;

    // `query` in the service's syntax (see MusicBrainzJson.h); at most `limit` releases.
    void search(const QString& query, int limit,
                std::function<void(Answer<std::vector<ReleaseSummary>>)> done);
    void readRelease(const QString& releaseId, std::function<void(Answer<Release>)> done);
    // The front cover at most `pixels` wide (250, 500 or 1200), as the archive stores it.
    void fetchFrontCover(const QString& releaseId, int pixels,
                         std::function<void(Answer<QByteArray>)> done);

    // HTTP requests sent so far, redirects followed and retries included.
    int requestsSent() const { return sent; }

private:
    struct Pending {
        QUrl url;
        bool paced; // the database's rate rule applies
        int busyLeft;
        int redirectsLeft;
        std::function<void(LookupProblem, int status, const QByteArray& body)> done;
    };

    void enqueue(Pending pending);
    void pump();
    void send(Pending pending);
    void finished(QNetworkReply* reply, Pending pending);

    ServiceConfig config;
    RequestPacer pacer;
    QNetworkAccessManager* network;
    std::deque<Pending> queue;
    bool busy = false;
    bool waiting = false;
    int sent = 0;
};

} // namespace waxline::lookup
