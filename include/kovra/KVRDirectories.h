#pragma once

#include <kovra/KVRExport.h>

#include <string>

/// The application's Documents and Library directories and the device's
/// vendor identifier. By default both directories live under
/// `$XDG_DATA_HOME/kovra/<bundle identifier>/` (XDG_DATA_HOME defaults to
/// ~/.local/share); an application may place them anywhere.
class KOVRA_API KVRDirectories {
public:
    KVRDirectories() = delete;

    /// Documents and Library under one base directory.
    static void setDataDirectory(const std::string& base);
    static void setDocumentsDirectory(const std::string& path);
    static void setLibraryDirectory(const std::string& path);
    /// Back to the XDG defaults.
    static void reset();

    /// The directory, created with its parents on first use. Empty when it
    /// cannot be created (the reason is logged).
    static std::string documentsDirectory();
    static std::string libraryDirectory();

    /// "Kovra Bundle Identifier", else "CFBundleIdentifier", else a default.
    static std::string bundleIdentifier();

    /// A random UUID made once and kept in the Library directory, in upper-case
    /// textual form (8-4-4-4-12).
    static std::string vendorIdentifier();
};
