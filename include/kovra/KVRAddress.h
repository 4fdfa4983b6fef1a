#pragma once

#include <kovra/KVRAddressModel.h>
#include <kovra/KVRExport.h>
#include <kovra/KVRRecord.h>

/// The address as it travels in the host's messages. Stored with the other
/// addresses: finding addresses returns KVRAddress objects for the rows made
/// as KVRAddress, and KVRAddress::findAll returns only those.
class KOVRA_API KVRAddress : public KVRRecord<KVRAddress, KVRAddressModel> {
public:
    static const KVREntityDescription& entity();

protected:
    KVRAddress() = default;
};
