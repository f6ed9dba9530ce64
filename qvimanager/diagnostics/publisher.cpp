#include "qvimanager/diagnostics/publisher.h"

#include "qvimanager/diagnostics/diagnostic_kit.h"
#include "qvimanager/diagnostics/log_item.h"
#include "qvimanager/diagnostics/memory_manager.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <string>
#include <system_error>

namespace Diagnostics {

namespace {

using Hold = std::lock_guard<std::recursive_mutex>;

const char* const kPackageFilterFile = "PackageDiagnosticsFilter.txt";
const char* const kClassFilterFile = "ClassDiagnosticsFilter.txt";
const char* const kShowOnlyMarker = "{ShowOnly}";

// The capacity the lists are made with.
const unsigned kInitialListSize = 20;
// The characters kept of a line.
const unsigned kMaxLineLength = 255;

// Reads the file `name` of the working directory into `list`, line by line
// from entry 0, and reports whether a line contained the show-only marker.
bool ReadFilterFile(const char* name, Vector<String>& list)
{
    std::error_code error;
    const std::filesystem::path directory = std::filesystem::current_path(error);
    if (error) {
        return false;
    }
    std::ifstream file(directory.string() + "/" + name, std::ios::in | std::ios::binary);
    if (!file.is_open()) {
        return false;
    }
    bool showOnly = false;
    unsigned index = 0;
    // Until the end of the file: the read that finds the end still gives a
    // line (empty after a final newline), and it is stored. A read error
    // ends the file too.
    while (!file.eof() && !file.bad()) {
        if (list.GetSize() <= index) {
            list.SetSize(list.GetSize() + 2);
        }
        char line[kMaxLineLength + 1];
        unsigned length = 0;
        bool carriageReturn = false;
        for (int c = file.get(); c != std::char_traits<char>::eof() && c != '\n'; c = file.get()) {
            // A carriage return counts as text unless the newline follows.
            if (carriageReturn && length < kMaxLineLength) {
                line[length++] = '\r';
            }
            carriageReturn = c == '\r';
            if (!carriageReturn && length < kMaxLineLength) {
                line[length++] = static_cast<char>(c);
            }
        }
        if (carriageReturn && file.eof() && length < kMaxLineLength) {
            line[length++] = '\r';
        }
        line[length] = '\0';
        if (std::strstr(line, kShowOnlyMarker) != nullptr) {
            showOnly = true;
        }
        list[index] = String(line);
        ++index;
    }
    return showOnly;
}

// The name equals an entry of the list. Empty entries (the unused ones and
// stored empty lines) match no name, and an empty name matches nothing.
bool IsListed(const String& name, const Vector<String>& list)
{
    if (name.IsEmpty()) {
        return false;
    }
    for (unsigned i = 0; i < list.GetSize(); ++i) {
        if (list[i].HasText() && list[i] == name) {
            return true;
        }
    }
    return false;
}

} // namespace

Vector<String>* Publisher::psmPackageFilterNames = nullptr;
Vector<String>* Publisher::psmClassFilterNames = nullptr;
bool Publisher::amShowOnly = false;

Publisher::Publisher(bool deleteFlag) : deleteOnUnregister(deleteFlag), unregistering(false), destructing(false)
{
    RegisterPublisher();
}

Publisher::~Publisher()
{
    const Hold hold(PoolGuard());
    destructing = true;
    if (!unregistering) {
        UnregisterPublisher();
    }
    destructing = false;
    delete psmPackageFilterNames;
    psmPackageFilterNames = nullptr;
    delete psmClassFilterNames;
    psmClassFilterNames = nullptr;
}

void Publisher::RegisterPublisher()
{
    DiagnosticKit::Instance().RegisterPublisher(this);
}

void Publisher::UnregisterPublisher()
{
    const Hold hold(PoolGuard());
    unregistering = true;
    DiagnosticKit::Instance().UnregisterPublisher(this);
    if (deleteOnUnregister && !destructing) {
        // The destructor sees `unregistering` and does not come back here.
        // Nothing of the object may be touched after this.
        delete this;
        return;
    }
    unregistering = false;
}

void Publisher::ReadDiagnosticsPublishFilter()
{
    const Hold hold(PoolGuard());
    if (psmPackageFilterNames == nullptr) {
        psmPackageFilterNames = new Vector<String>(kInitialListSize);
    }
    if (psmClassFilterNames == nullptr) {
        psmClassFilterNames = new Vector<String>(kInitialListSize);
    }
    if (ReadFilterFile(kPackageFilterFile, *psmPackageFilterNames)) {
        amShowOnly = true;
    }
    if (ReadFilterFile(kClassFilterFile, *psmClassFilterNames)) {
        amShowOnly = true;
    }
}

bool Publisher::MatchWithDiagnosticsFilter(const String& package, const String& className)
{
    const Hold hold(PoolGuard());
    if (psmPackageFilterNames == nullptr) {
        // The first decision: make the lists and read the files, once.
        ReadDiagnosticsPublishFilter();
    }
    bool match = false;
    if (IsListed(package, *psmPackageFilterNames)) {
        match = true;
    }
    if (IsListed(className, *psmClassFilterNames)) {
        match = true;
    }
    if (amShowOnly) {
        match = !match;
    }
    return match;
}

StringPublisher::StringPublisher(bool deleteFlag) : Publisher(deleteFlag) {}

StringPublisher::~StringPublisher() = default;

void StringPublisher::Publish(const LogItem& item)
{
    Publish(item.ToString());
}

} // namespace Diagnostics
