#include "Platform/KVRAccessorySession.h"

KVRAccessorySession::KVRAccessorySession(std::string protocolString, std::shared_ptr<KVRInputStream> inputStream,
                                         std::shared_ptr<KVROutputStream> outputStream)
    : protocolString_(std::move(protocolString)),
      inputStream_(std::move(inputStream)),
      outputStream_(std::move(outputStream)) {}

KVRAccessorySession::~KVRAccessorySession() {
    if (inputStream_) inputStream_->close();
    if (outputStream_) outputStream_->close();
}
