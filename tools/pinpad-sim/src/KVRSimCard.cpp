#include "KVRSimCard.h"

#include <chrono>

namespace {

// Discretionary data: PIN verification key index and value, then zeros.
constexpr const char* kDiscretionary = "1000012345678";

std::vector<KVRSimCard> catalogue() {
    auto chip = [](std::string name, std::string pan, std::string holder, int recidx, std::string label, std::string aid,
                   std::string aip, std::string iad) {
        KVRSimCard card;
        card.name = std::move(name);
        card.cardType = 3;
        card.recidx = recidx;
        card.pan = std::move(pan);
        card.cardholderName = std::move(holder);
        card.expiry = "2812";
        card.serviceCode = "201";
        card.applicationLabel = std::move(label);
        card.aid = std::move(aid);
        card.panSequenceNumber = 1;
        card.applicationInterchangeProfile = std::move(aip);
        card.issuerApplicationData = std::move(iad);
        return card;
    };
    auto stripe = [](std::string name, std::string pan, std::string holder, int recidx, std::string serviceCode) {
        KVRSimCard card;
        card.name = std::move(name);
        card.cardType = 0;
        card.recidx = recidx;
        card.pan = std::move(pan);
        card.cardholderName = std::move(holder);
        card.expiry = "2812";
        card.serviceCode = std::move(serviceCode);
        return card;
    };
    return {
        chip("chip-visa", "4761739001010010", "CARDHOLDER/VISA", 3, "VISA CREDITO", "A0000000031010", "5800",
             "06010A03A00000"),
        chip("chip-master", "5413330089600010", "CARDHOLDER/MASTERCARD", 4, "MASTERCARD", "A0000000041010", "1980",
             "0110A04001220000000000000000000000FF"),
        stripe("stripe", "4111111111111111", "CARDHOLDER/STRIPE", 3, "101"),
        stripe("stripe-pin", "5555555555554444", "CARDHOLDER/STRIPE PIN", 4, "120"),
        stripe("stripe-chip", "4012001037141112", "CARDHOLDER/CHIP SWIPED", 3, "201"),
    };
}

}  // namespace

std::optional<KVRSimCard> KVRSimCard::named(const std::string& name) {
    for (auto& card : catalogue()) {
        if (card.name == name) {
            return card;
        }
    }
    return std::nullopt;
}

std::vector<std::string> KVRSimCard::names() {
    std::vector<std::string> result;
    for (auto& card : catalogue()) {
        result.push_back(card.name);
    }
    return result;
}

std::string KVRSimCard::firstTrack() const {
    return "B" + pan + "^" + cardholderName + "^" + expiry + serviceCode + kDiscretionary + "000000";
}

std::string KVRSimCard::secondTrack() const {
    return pan + "=" + expiry + serviceCode + kDiscretionary;
}

std::string KVRSimCard::expirationDate() const {
    using namespace std::chrono;
    int year = 2000 + std::stoi(expiry.substr(0, 2));
    unsigned month = static_cast<unsigned>(std::stoi(expiry.substr(2, 2)));
    year_month_day_last last{year_month_day_last{std::chrono::year{year}, month_day_last{std::chrono::month{month}}}};
    return expiry + std::to_string(static_cast<unsigned>(last.day()) / 10) +
           std::to_string(static_cast<unsigned>(last.day()) % 10);
}
