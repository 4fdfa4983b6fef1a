#include <gtest/gtest.h>

#include "Host/KVRCommunicationController.h"
#include "testing/KVRLoopbackPort.h"
#include "testing/KVRTempDirectory.h"
#include "testing/KVRTestCertificates.h"
#include "testing/KVRTestFixture.h"

#include <kovra/KVRApplicationInfo.h>

#include <httplib.h>

#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>

namespace {

using namespace std::chrono_literals;

struct SeenRequest {
    std::string method;
    std::string path;
    std::string body;
    std::multimap<std::string, std::string> headers;  // as sent, without the server's own REMOTE_/LOCAL_ entries
};

// An HTTPS server on a free loopback port, answering on its own threads.
class LocalHttpsServer {
public:
    explicit LocalHttpsServer(const KVRTestCertificates& certificates)
        : server_(certificates.certificatePath.c_str(), certificates.privateKeyPath.c_str()) {
        server_.set_tcp_nodelay(true);
        server_.set_keep_alive_timeout(1);
    }
    ~LocalHttpsServer() {
        server_.stop();
        if (thread_.joinable()) thread_.join();
    }

    httplib::SSLServer& handlers() { return server_; }

    void start() {
        ASSERT_TRUE(server_.is_valid());
        port_ = server_.bind_to_any_port("127.0.0.1");
        ASSERT_GT(port_, 0);
        thread_ = std::thread([this] { server_.listen_after_bind(); });
        while (!server_.is_running()) std::this_thread::yield();
    }

    std::string url(const std::string& path) const { return "https://127.0.0.1:" + std::to_string(port_) + path; }
    int port() const { return port_; }

    /// Answers every POST with `reply` and remembers the requests.
    void replyToEveryPost(int status, std::string reply, std::string contentType = "text/xml") {
        server_.Post(".*", [this, status, reply, contentType](const httplib::Request& req, httplib::Response& res) {
            remember(req);
            res.status = status;
            res.set_content(reply, contentType.c_str());
        });
        start();
    }

    void remember(const httplib::Request& req) {
        SeenRequest seen{req.method, req.path, req.body, {}};
        for (const auto& [name, value] : req.headers) {
            if (name.rfind("REMOTE_", 0) != 0 && name.rfind("LOCAL_", 0) != 0) seen.headers.emplace(name, value);
        }
        std::lock_guard lock(mutex_);
        requests_.push_back(std::move(seen));
    }

    std::vector<SeenRequest> requests() {
        std::lock_guard lock(mutex_);
        return requests_;
    }

private:
    httplib::SSLServer server_;
    std::thread thread_;
    int port_ = 0;
    std::mutex mutex_;
    std::vector<SeenRequest> requests_;
};

// Runs the exchanges on a thread of their own: when it ends, its curl handle
// and the connections it kept are closed, so the server stops at once.
template <typename F>
auto onOwnThread(F work) {
    decltype(work()) result;
    std::thread thread([&] { result = work(); });
    thread.join();
    return result;
}

// A bound loopback port where nobody listens: connections are refused.
std::string refusingUrl(const KVRLoopbackPort& port, const std::string& path) {
    return "https://" + port.hostAndPort() + path;
}

struct Exchange {
    std::optional<std::string> reply;
    std::optional<KVRError> error;
};

Exchange postXml(const std::string& xml, const std::string& url) {
    return onOwnThread([&] {
        Exchange e;
        e.reply = KVRCommunicationController::postXml(xml, url, &e.error);
        return e;
    });
}

class KVRCommunicationControllerTest : public KVRTestFixture {
protected:
    static void SetUpTestSuite() {
        directory_ = new KVRTempDirectory();
        trusted_ = new KVRTestCertificates(KVRTestCertificates::generate(directory_->path(), "trusted"));
        stranger_ = new KVRTestCertificates(KVRTestCertificates::generate(directory_->path(), "stranger"));
    }
    static void TearDownTestSuite() {
        delete trusted_;
        delete stranger_;
        delete directory_;
    }
    void SetUp() override { KVRApplicationInfo::setValue("Kovra CA File", trusted_->caCertificatePath); }

    static KVRTempDirectory* directory_;
    static KVRTestCertificates* trusted_;
    static KVRTestCertificates* stranger_;
};

KVRTempDirectory* KVRCommunicationControllerTest::directory_ = nullptr;
KVRTestCertificates* KVRCommunicationControllerTest::trusted_ = nullptr;
KVRTestCertificates* KVRCommunicationControllerTest::stranger_ = nullptr;

// A large body must go at once, not after a second's wait for "100 Continue".
TEST_F(KVRCommunicationControllerTest, XmlIsPostedWithExactlyItsOwnHeadersAndBytes) {
    LocalHttpsServer server(*trusted_);
    server.replyToEveryPost(200, "<Document>ação</Document>");
    const std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n<Document>ç ã" + std::string(2u << 20, 'x') +
                            "</Document>";

    Exchange e = postXml(xml, server.url("/Authorize"));
    EXPECT_FALSE(e.error);
    EXPECT_EQ(e.reply, "<Document>ação</Document>");

    auto requests = server.requests();
    ASSERT_EQ(requests.size(), 1u);
    const SeenRequest& r = requests[0];
    EXPECT_EQ(r.method, "POST");
    EXPECT_EQ(r.path, "/Authorize");
    EXPECT_TRUE(r.body == xml);
    std::multimap<std::string, std::string> expected = {
        {"Host", "127.0.0.1:" + std::to_string(server.port())},
        {"Content-Length", std::to_string(xml.size())},
        {"Content-Type", "text/xml"},
    };
    EXPECT_EQ(r.headers, expected);
}

TEST_F(KVRCommunicationControllerTest, AnyStatusIsABodyButInvalidUtf8IsNothing) {
    const std::tuple<int, std::string, std::optional<std::string>> cases[] = {
        {500, "<Error>falha</Error>", "<Error>falha</Error>"}, {200, "", ""}, {200, "<A>\xC3\x28</A>", std::nullopt}};
    for (const auto& [status, body, reply] : cases) {
        SCOPED_TRACE(body);
        LocalHttpsServer server(*trusted_);
        server.replyToEveryPost(status, body);
        Exchange e = postXml("<A/>", server.url("/Authorize"));
        EXPECT_EQ(e.reply, reply);
        EXPECT_FALSE(e.error);
    }
}

TEST_F(KVRCommunicationControllerTest, TimeOutIsReportedAsTimedOut) {
    std::mutex mutex;
    std::condition_variable released;
    bool done = false;
    LocalHttpsServer server(*trusted_);  // after what its handler uses, so it stops first
    server.handlers().Post("/Authorize", [&](const httplib::Request&, httplib::Response& res) {
        std::unique_lock lock(mutex);
        released.wait(lock, [&] { return done; });
        res.set_content("late", "text/xml");
    });
    server.start();
    KVRTestFixture::setXmlTimeout(300ms);

    auto start = std::chrono::steady_clock::now();
    Exchange e = postXml("<A/>", server.url("/Authorize"));
    auto elapsed = std::chrono::steady_clock::now() - start;
    {
        std::lock_guard lock(mutex);
        done = true;
    }
    released.notify_all();

    EXPECT_FALSE(e.reply);
    ASSERT_TRUE(e.error);
    EXPECT_EQ(e.error->domain(), NSURLErrorDomain);
    EXPECT_EQ(e.error->code(), NSURLErrorTimedOut);
    EXPECT_GE(elapsed, 250ms);  // curl counts from its own start, a hair after ours
    EXPECT_LT(elapsed, 5s);
}

TEST_F(KVRCommunicationControllerTest, TransportFailuresMapToUrlLoadingCodes) {
    LocalHttpsServer impostor(*stranger_);  // a certificate our CA never signed
    impostor.replyToEveryPost(200, "should not be read");
    LocalHttpsServer pinned(*trusted_);  // trusted, but its key is not the pinned one
    pinned.replyToEveryPost(200, "pinned");
    KVRLoopbackPort closedPort;
    std::string refused = refusingUrl(closedPort, "/Authorize");

    struct Case {
        const char* name;
        std::string url;
        long code;
        std::string pins;
    };
    const Case cases[] = {
        {"nobody listening", refused, NSURLErrorCannotConnectToHost, ""},
        {"untrusted certificate", impostor.url("/Authorize"), NSURLErrorSecureConnectionFailed, ""},
        {"plain http", "http://127.0.0.1:1/Authorize", NSURLErrorUnsupportedURL, ""},
        {"pinned key mismatch", pinned.url("/Report"), NSURLErrorSecureConnectionFailed, stranger_->publicKeyPin},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        KVRApplicationInfo::setValue("Kovra Pinned Public Keys", c.pins);
        Exchange e = postXml("<A/>", c.url);
        EXPECT_FALSE(e.reply);
        ASSERT_TRUE(e.error);
        EXPECT_EQ(e.error->domain(), NSURLErrorDomain);
        EXPECT_EQ(e.error->code(), c.code);
        EXPECT_EQ(e.error->userInfo().at("NSErrorFailingURLStringKey"), c.url);
        EXPECT_FALSE(e.error->localizedDescription().empty());
    }
    EXPECT_TRUE(impostor.requests().empty());
    EXPECT_TRUE(pinned.requests().empty());
    // One of several pinned keys is enough.
    KVRApplicationInfo::setValue("Kovra Pinned Public Keys", stranger_->publicKeyPin + ";" + trusted_->publicKeyPin);
    EXPECT_EQ(postXml("<A/>", pinned.url("/Report")).reply, "pinned");
    // Without an error to fill, a transport failure reads as an empty reply.
    EXPECT_EQ(onOwnThread([&] { return KVRCommunicationController::postXml("<A/>", refused); }), "");
}

TEST_F(KVRCommunicationControllerTest, RepliesAboveSixteenMebibytesAreRefused) {
    const size_t limit = KVRCommunicationController::maximumReplyLength;
    LocalHttpsServer server(*trusted_);
    server.handlers().Post("/fits", [&](const httplib::Request&, httplib::Response& res) {
        res.set_content(std::string(limit, 'a'), "text/xml");
    });
    server.handlers().Post("/declared", [&](const httplib::Request&, httplib::Response& res) {
        res.set_content(std::string(limit + 1, 'a'), "text/xml");
    });
    server.handlers().Post("/chunked", [&](const httplib::Request&, httplib::Response& res) {
        res.set_chunked_content_provider("text/xml", [limit](size_t offset, httplib::DataSink& sink) {
            if (offset > limit) {
                sink.done();
                return true;
            }
            std::string piece(1u << 20, 'b');
            return sink.write(piece.data(), piece.size());
        });
    });
    server.start();

    Exchange fits = postXml("<A/>", server.url("/fits"));
    ASSERT_TRUE(fits.reply);
    EXPECT_EQ(fits.reply->size(), limit);
    for (const char* path : {"/declared", "/chunked"}) {
        SCOPED_TRACE(path);
        Exchange e = postXml("<A/>", server.url(path));
        EXPECT_FALSE(e.reply);
        ASSERT_TRUE(e.error);
        EXPECT_EQ(e.error->code(), NSURLErrorDataLengthExceedsMaximum);
    }
}

TEST_F(KVRCommunicationControllerTest, JsonIsPostedWithJsonHeadersAndRepliesThatAreNotJsonGiveNothing) {
    LocalHttpsServer server(*trusted_);
    server.handlers().Post("/send", [&](const httplib::Request& req, httplib::Response& res) {
        server.remember(req);
        res.set_content("{\"status\":\"sent\",\"id\":7}", "application/json");
    });
    server.handlers().Post("/html", [&](const httplib::Request&, httplib::Response& res) {
        res.status = 502;
        res.set_content("<html>Bad gateway</html>", "text/html");
    });
    server.start();
    KVRLoopbackPort closedPort;
    const std::string body = "{\"template\":\"default\",\"body_parameters\":{\"body_message\":\"olá\"}}";
    auto results = onOwnThread([&] {
        std::optional<KVRError> sentError, notJsonError, refusedError;
        auto sent = KVRCommunicationController::postJSON(body, server.url("/send"), &sentError);
        auto notJson = KVRCommunicationController::postJSON("{}", server.url("/html"), &notJsonError);
        auto refused = KVRCommunicationController::postJSON("{}", refusingUrl(closedPort, "/send"), &refusedError);
        return std::make_tuple(sent, sentError, notJson, notJsonError, refused, refusedError);
    });
    auto [sent, sentError, notJson, notJsonError, refused, refusedError] = results;
    EXPECT_FALSE(sentError);
    ASSERT_TRUE(sent);
    EXPECT_EQ((*sent)["status"], "sent");
    EXPECT_EQ((*sent)["id"], 7);
    auto requests = server.requests();
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].body, body);
    auto headers = requests[0].headers;
    headers.erase("Host");
    std::multimap<std::string, std::string> expected = {{"Accept", "application/json"},
                                                        {"Content-Type", "application/json"},
                                                        {"Content-Length", std::to_string(body.size())}};
    EXPECT_EQ(headers, expected);

    EXPECT_FALSE(notJson);
    EXPECT_FALSE(notJsonError);
    EXPECT_FALSE(refused);
    ASSERT_TRUE(refusedError);
    EXPECT_EQ(refusedError->code(), NSURLErrorCannotConnectToHost);
}

}  // namespace
