#pragma once

#include "testing/KVRTempDirectory.h"

#include <string>

/// Points the object store at a fresh temporary data directory for the life of
/// the object, and back at the suite's data directory afterwards. Records made
/// before the switch are detached from the store that replaces theirs.
class KVRTemporaryStore {
public:
    KVRTemporaryStore();
    ~KVRTemporaryStore();
    KVRTemporaryStore(const KVRTemporaryStore&) = delete;
    KVRTemporaryStore& operator=(const KVRTemporaryStore&) = delete;

    const std::string& dataDirectory() const { return directory_.path(); }
    /// Where the store file lives (it may not exist yet).
    std::string storeDirectory() const;
    std::string storePath() const;
    /// Closes the store, as a new process would find it on disk.
    void reopen();

private:
    KVRTempDirectory directory_;
};
