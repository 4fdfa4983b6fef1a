#include "KVRSimDelivery.h"

void KVRSimDelivery::merge(const KVRSimDelivery& later) {
    notifications.insert(notifications.end(), later.notifications.begin(), later.notifications.end());
    KVRSimDelivery defaults;
    if (later.delayMs != defaults.delayMs) delayMs = later.delayMs;
    if (!later.split.empty()) {
        split = later.split;
        repeatSplit = later.repeatSplit;
    }
    if (later.splitDelayMs != defaults.splitDelayMs) splitDelayMs = later.splitDelayMs;
    if (later.straySynAfter) straySynAfter = later.straySynAfter;
    wrongCrc = wrongCrc || later.wrongCrc;
    silence = silence || later.silence;
    ackFirst = ackFirst || later.ackFirst;
    if (later.hangUp != HangUp::Never) hangUp = later.hangUp;
}
