#pragma once

#include "KovraSession.h"

#include <chrono>
#include <functional>
#include <string>

class KovraDemoEnvironment;
class KovraInterrupts;
class KovraOutput;

/// `kovra demo`: on a machine with nothing configured, starts both emulators
/// and runs a merchant's whole day against them through the public
/// providers, printing each step and its outcome. A step that does not end as
/// expected stops the demo with a failure.
class KovraDemo {
public:
    struct Options {
        std::string keepDirectory;
        double writePause = 0.5;
        bool verbose = false;
    };

    static constexpr const char* kKovraCode = "KOVRA-0001";
    static constexpr const char* kReceiptAddress = "cliente@example.com";

    KovraDemo(Options options, KovraOutput& output, KovraInterrupts& interrupts);

    void run();

private:
    struct Tally {
        int approved = 0;
        int declined = 0;
        int cancelled = 0;
    };

    void runSteps(KovraDemoEnvironment& environment);
    void step(const std::string& title, const std::function<void()>& body);
    void say(const std::string& text);
    void enrol();
    void downloadTables();
    void connect();
    KovraSession::Transaction approvedSale(const KovraSession::SaleRequest& request);
    void declinedSale(const KovraSession::SaleRequest& request);
    void showDisplay();
    void listTransactions();
    void cancel(const KovraSession::Transaction& sale);
    void emailReceipt(const KovraSession::Transaction& sale, const KovraDemoEnvironment& environment);
    void summary(const KovraDemoEnvironment& environment);

    Options options_;
    KovraOutput& output_;
    KovraInterrupts& interrupts_;
    KovraSession session_;
    KovraDemoEnvironment* environment_ = nullptr;
    Tally tally_;
    int stepNumber_ = 0;
    std::string merchantName_;
    std::chrono::steady_clock::time_point started_;
};
