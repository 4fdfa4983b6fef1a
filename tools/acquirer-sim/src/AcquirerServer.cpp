#include "AcquirerServer.h"

#include "RequestRejected.h"
#include "XmlReply.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <optional>
#include <stdexcept>

#include <httplib.h>
#include <nlohmann/json.hpp>

namespace acqsim {
namespace {

constexpr const char* kLoopback = "127.0.0.1";
constexpr size_t kMaxBody = 1 << 20;

// Nagle's algorithm with delayed acknowledgements would add ~40 ms to every
// exchange; accepted sockets inherit the option from the listening one.
void socketOptions(int sock) {
    int on = 1;
    setsockopt(sock, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    setsockopt(sock, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

std::optional<std::string> lengthProblem(const httplib::Request& request) {
    if (!request.has_header("Content-Length")) {
        return "the request has no Content-Length";
    }
    if (request.get_header_value("Content-Length") != std::to_string(request.body.size())) {
        return "Content-Length does not count the body's bytes";
    }
    return std::nullopt;
}

// The library posts XML with exactly Content-Type "text/xml" and
// Content-Length; an Accept or Expect header means the HTTP client added
// headers of its own.
std::optional<std::string> xmlHeaderProblem(const httplib::Request& request) {
    const std::string type = request.get_header_value("Content-Type");
    if (type != "text/xml") {
        return "Content-Type is \"" + type + "\", not \"text/xml\"";
    }
    for (const char* unwanted : {"Accept", "Expect", "Transfer-Encoding"}) {
        if (request.has_header(unwanted)) {
            return std::string("the request carries an ") + unwanted + " header";
        }
    }
    return lengthProblem(request);
}

std::optional<std::string> jsonHeaderProblem(const httplib::Request& request) {
    for (const char* header : {"Content-Type", "Accept"}) {
        const std::string value = request.get_header_value(header);
        if (value != "application/json") {
            return std::string(header) + " is \"" + value + "\", not \"application/json\"";
        }
    }
    return lengthProblem(request);
}

SimReply rejectionReply(const RequestRejected& rejected, bool json) {
    const bool malformed = rejected.reasonCode() == "PARS" || rejected.reasonCode() == "IMSG";
    const std::string outcome = "rejected (" + rejected.reasonCode() + "): " + rejected.what();
    if (json) {
        nlohmann::json body{{"status", "error"}, {"error", rejected.what()}};
        return SimReply{400, "application/json", body.dump(), outcome};
    }
    return SimReply{malformed ? 400 : 200, "text/xml", XmlReply::rejection(rejected.reasonCode(), rejected.what()), outcome};
}

} // namespace

AcquirerServer::AcquirerServer(const ServerSetup& setup, const MerchantDirectory& merchants, SimState& state,
                               RequestLog& log)
    : server_(std::make_unique<httplib::SSLServer>(setup.certificateFile.c_str(), setup.keyFile.c_str())),
      log_(log),
      report_(merchants, state),
      authorization_(merchants, state, setup.lateAnswerSeconds, setup.replyDelaySeconds),
      cancellation_(merchants, state, setup.adviceDelaySeconds),
      mail_(state, setup.outboxDirectory) {
    if (!server_->is_valid()) {
        throw std::runtime_error("cannot load the server certificate " + setup.certificateFile.string());
    }
    server_->set_tcp_nodelay(true);
    server_->set_socket_options(socketOptions);
    server_->set_payload_max_length(kMaxBody);
    server_->set_keep_alive_timeout(2);

    addRoute("/Report", false, [this](const httplib::Request& r) { return report_.handle(r.body); });
    addRoute("/Authorize", false, [this](const httplib::Request& r) { return authorization_.handle(r.body); });
    addRoute("/CancellationAdvice", false, [this](const httplib::Request& r) { return cancellation_.handle(r.body); });
    addRoute("/send", true, [this](const httplib::Request& r) { return mail_.handle(r.body); });

    auto missing = [this](const httplib::Request& request, httplib::Response& response) { notFound(request, response); };
    server_->Get(".*", missing);
    server_->Post(".*", missing);
    server_->Put(".*", missing);
    server_->Patch(".*", missing);
    server_->Delete(".*", missing);
    server_->Options(".*", missing);
}

AcquirerServer::~AcquirerServer() = default;

void AcquirerServer::addRoute(const char* path, bool json, Route route) {
    server_->Post(path, [this, json, route = std::move(route)](const httplib::Request& request, httplib::Response& response) {
        serve(request, response, json, route);
    });
}

void AcquirerServer::serve(const httplib::Request& request, httplib::Response& response, bool json, const Route& route) {
    SimReply reply;
    try {
        std::optional<std::string> problem = json ? jsonHeaderProblem(request) : xmlHeaderProblem(request);
        if (problem) {
            throw RequestRejected("IMSG", *problem);
        }
        reply = route(request);
    } catch (const RequestRejected& rejected) {
        reply = rejectionReply(rejected, json);
    } catch (const std::exception& error) {
        reply = SimReply{500, "text/plain", std::string("internal error: ") + error.what() + "\n",
                         std::string("internal error: ") + error.what()};
    }
    log_.write(request.method, request.path, reply.status, reply.outcome);
    if (reply.delaySeconds > 0 && !stopping_.waitFor(reply.delaySeconds)) {
        response.status = 503;
        return;
    }
    response.status = reply.status;
    response.set_content(reply.body, reply.contentType.c_str());
}

void AcquirerServer::notFound(const httplib::Request& request, httplib::Response& response) {
    log_.write(request.method, request.path, 404, "not found");
    response.status = 404;
    response.set_content("not found\n", "text/plain");
}

int AcquirerServer::bind(int port) {
    if (port == 0) {
        int bound = server_->bind_to_any_port(kLoopback);
        if (bound <= 0) {
            throw std::runtime_error("cannot bind a port on 127.0.0.1");
        }
        return bound;
    }
    if (!server_->bind_to_port(kLoopback, port)) {
        throw std::runtime_error("cannot bind 127.0.0.1:" + std::to_string(port) + " (in use?)");
    }
    return port;
}

void AcquirerServer::run() {
    server_->listen_after_bind();
}

bool AcquirerServer::running() const {
    return server_->is_running();
}

void AcquirerServer::stop() {
    stopping_.raise();
    server_->stop();
}

} // namespace acqsim
