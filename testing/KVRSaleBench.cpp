#include "testing/KVRSaleBench.h"

#include <kovra/KVRJournalProvider.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRQueues.h>
#include <kovra/KVRTmsTableModel.h>
#include <kovra/KVRTransactionProvider.h>

#include "Pinpad/KVRCommandController.h"
#include "Pinpad/KVRPinpadController.h"
#include "Utils/KVRReachability.h"
#include "testing/KVREmvTableSamples.h"
#include "testing/KVRPinpadReplies.h"
#include "testing/KVRTestFixture.h"

#include <gtest/gtest.h>

namespace {

std::string trimRight(std::string text) {
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

}  // namespace

std::string KVRSaleBench::hostIccData() { return std::string("910A0102030405060708090A8A023030") + "9F2608" + kHostArqc; }

std::string KVRSaleBench::authorisationReply(const std::string& responseCode, bool withResult) {
    std::string result = withResult ? "<AuthstnRslt><RspnToAuthstn><Rspn>" + responseCode +
                                          "</Rspn><RspnRsn>00</RspnRsn></RspnToAuthstn><AuthstnCd>" +
                                          kAuthorisationCode + "</AuthstnCd></AuthstnRslt>"
                                    : std::string();
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<Document xmlns=\"urn:AcceptorAuthorisationResponseV02.1\"><AccptrAuthstnRspn>"
           "<Hdr><MsgFctn>AUTP</MsgFctn><PrtcolVrsn>2.0</PrtcolVrsn></Hdr><AuthstnRspn>"
           "<Tx><TxId><TxDtTm>2024-05-17T14:32:05</TxDtTm><TxRef>" +
           std::string(kReference) + "</TxRef></TxId><RcptTxId>" + kReceiptKey +
           "</RcptTxId><TxDtls><Ccy>986</Ccy><ICCRltdData>" + hostIccData() +
           "</ICCRltdData></TxDtls></Tx><TxRspn>" + result + "</TxRspn></AuthstnRspn></AccptrAuthstnRspn></Document>";
}

std::string KVRSaleBench::cancellationReply(const std::string& responseCode) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<Document xmlns=\"urn:AcceptorCancellationAdviceResponseV02.1\"><AccptrCxlAdvcRspn>"
           "<Hdr><MsgFctn>CCAK</MsgFctn><PrtcolVrsn>2.0</PrtcolVrsn></Hdr><CxlAdvcRspn><Tx><Rspn>" +
           responseCode + "</Rspn></Tx></CxlAdvcRspn></AccptrCxlAdvcRspn></Document>";
}

KVRSaleBench::KVRSaleBench()
    : authorisation_(body(authorisationReply("APPR"))),
      cancellation_(body(cancellationReply("APPR"))),
      pinpad_(KVRScriptedConnection::install()) {
    using namespace KVRPinpadReplies;
    pinpad_->reply("GIN", {ginReply("KOVRA PINPAD", "KVR-P1", "SN 4400 0077")});
    pinpad_->reply("GCR", {gcrReply(0, CardRead{})});
    pinpad_->reply("GOC", {gocReply(0, 2, "1A2B3C4D5E6F7081", "FFFF9876543210E00001", "9F26081122334455667788")});
    pinpad_->reply("FNC", {fncReply(0, 0)});
    pinpad_->reply("GPN", {gpnReply(0, "0F1E2D3C4B5A6978", "FFFF9876543210E00002")});

    auto merchant = KVRMerchantModel::create();
    merchant->setSaleAffiliationKey("1234-5678");
    merchant->setMerchantName("Padaria Kovra");
    auto tables = KVRTmsTableModel::create();
    tables->setAidTable(KVREmvTableSamples::defaultAidTable());
    tables->setCapkTable(KVREmvTableSamples::defaultCapkTable());
    tables->save();

    host_.setReply([this](const KVRFakeExchange::Request& request, std::optional<KVRError>* error) {
        HostReply reply;
        {
            std::lock_guard lock(mutex_);
            bool cancellation = request.url.find("/CancellationAdvice") != std::string::npos;
            reply = cancellation ? cancellation_ : authorisation_;
            if (cancellation && !KVRJournalProvider::isExchangeInFlight()) ++advicesNobodyWaitsFor_;
        }
        if (reply.urlError) *error = KVRError(NSURLErrorDomain, *reply.urlError);
        return reply.body;
    });
    KVRTestFixture::setNetworkFlags(KVRReachability::kFlagReachable);
}

// The link lets go of the scripted PIN pad before it goes; the rest is put
// back when the test ends.
KVRSaleBench::~KVRSaleBench() { KVRPinpadController::sharedController().setConnection(nullptr); }

void KVRSaleBench::setAuthorisationReply(HostReply reply) {
    std::lock_guard lock(mutex_);
    authorisation_ = std::move(reply);
}

void KVRSaleBench::setCancellationReply(HostReply reply) {
    std::lock_guard lock(mutex_);
    cancellation_ = std::move(reply);
}

KVRCompletionRecorder::Call KVRSaleBench::sell(const std::shared_ptr<KVRTransactionModel>& transaction) {
    // The recorder lives as long as the completion that records into it.
    auto recorder = std::make_shared<KVRCompletionRecorder>();
    KVRCompletion block = recorder->block();
    KVRTransactionProvider::sendTransaction(transaction, [recorder, block](bool success, std::optional<KVRError> error) {
        block(success, std::move(error));
    });
    EXPECT_TRUE(recorder->waitForCalls(1, std::chrono::seconds(60))) << "the sale never completed";
    auto calls = recorder->calls();
    EXPECT_EQ(calls.size(), 1u);
    return calls.empty() ? KVRCompletionRecorder::Call{} : calls.front();
}

std::shared_ptr<KVRTransactionModel> KVRSaleBench::newSale(long long amount, int type) {
    auto transaction = KVRTransactionModel::create();
    transaction->setAmount(KVRNumber(amount));
    transaction->setType(type);
    return transaction;
}

std::vector<std::string> KVRSaleBench::displays() const {
    std::vector<std::string> shown;
    for (const auto& request : pinpad_->requests()) {
        std::string command = request.substr(0, 3);
        if (command != "DSP" && command != "RMC") continue;
        std::string message = request.size() > 6 ? request.substr(6) : std::string();
        message.resize(32, ' ');
        shown.push_back(command + " " + trimRight(message.substr(0, 16)) + "|" + trimRight(message.substr(16, 16)));
    }
    return shown;
}

std::vector<KVRFakeExchange::Request> KVRSaleBench::hostRequests(const std::string& path) const {
    std::vector<KVRFakeExchange::Request> matching;
    for (const auto& request : host_.requests()) {
        if (request.url.size() >= path.size() && request.url.compare(request.url.size() - path.size(), path.size(), path) == 0) {
            matching.push_back(request);
        }
    }
    return matching;
}
