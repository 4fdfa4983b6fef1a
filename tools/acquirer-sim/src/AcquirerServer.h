#pragma once

#include "AuthorizationHandler.h"
#include "CancellationHandler.h"
#include "MailHandler.h"
#include "ReportHandler.h"
#include "RequestLog.h"
#include "SimReply.h"
#include "StopSignal.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace httplib {
class SSLServer;
struct Request;
struct Response;
} // namespace httplib

namespace acqsim {

struct ServerSetup {
    std::filesystem::path certificateFile;
    std::filesystem::path keyFile;
    std::filesystem::path outboxDirectory;
    double lateAnswerSeconds = 55;
    double replyDelaySeconds = 0;
    double adviceDelaySeconds = 0;
};

// HTTPS on 127.0.0.1 with the four POST routes; everything else is 404.
// Every request, answered or not, gets one line in the request log.
class AcquirerServer {
public:
    AcquirerServer(const ServerSetup& setup, const MerchantDirectory& merchants, SimState& state, RequestLog& log);
    ~AcquirerServer();

    // Binds 127.0.0.1:`port` (0 picks a free port); returns the port bound.
    // Throws std::runtime_error when the port cannot be had.
    int bind(int port);
    // Serves until stop(); returns afterwards.
    void run();
    // True once run() accepts connections; a stop() before that is lost.
    bool running() const;
    // From any thread; wakes answers that are being held back.
    void stop();

private:
    using Route = std::function<SimReply(const httplib::Request&)>;

    void addRoute(const char* path, bool json, Route route);
    void serve(const httplib::Request& request, httplib::Response& response, bool json, const Route& route);
    void notFound(const httplib::Request& request, httplib::Response& response);

    std::unique_ptr<httplib::SSLServer> server_;
    RequestLog& log_;
    StopSignal stopping_;
    ReportHandler report_;
    AuthorizationHandler authorization_;
    CancellationHandler cancellation_;
    MailHandler mail_;
};

} // namespace acqsim
