#include "vek/pathinfo.h"

#include <array>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "vek/auxiliary/ini_reader.h"
#include "vek/base/host_name.h"
#include "vek/base/optional_function.h"
#include "vek/base/shared_lib.h"
#include "vek/base/text.h"
#include "vek/base/windows.h"
#include "vek/fs/path_text.h"
#include "vek/fs/program_path.h"

// Behind windows.h, which they need.
#include <initguid.h>
#include <knownfolders.h>
#include <objbase.h>
#include <shlobj.h>

namespace vek {

namespace {

PathInfo* singleton = nullptr;

std::string hostNameOrPlaceholder() {
    try {
        return hostName(0);
    } catch (const OsError&) {
        return "hostname";
    }
}

// The shell's libraries are loaded here alone: as imports of the program they would double the
// time that each start takes, also one that needs no directory.
class ShellFunctions {
  public:
    ShellFunctions() {
        shell.load("shell32", 0);
        ole.load("ole32", 0);
        getKnownFolderPath =
            resolveFunction<decltype(&::SHGetKnownFolderPath)>(shell, "SHGetKnownFolderPath");
        freeTaskMemory = resolveFunction<decltype(&::CoTaskMemFree)>(ole, "CoTaskMemFree");
    }

    decltype(&::SHGetKnownFolderPath) getKnownFolderPath = nullptr;
    decltype(&::CoTaskMemFree) freeTaskMemory = nullptr;

  private:
    SharedLib shell;
    SharedLib ole;
};

std::string windowsDirectory() {
    constexpr char failure[] = "failed to determine windows directory";
    try {
        const ShellFunctions functions;
        wchar_t* wide = nullptr;
        if (functions.getKnownFolderPath(FOLDERID_Windows, 0, nullptr, &wide) != S_OK) {
            throw PathInfo::Error(failure);
        }
        std::array<char, 260> narrow = {};
        const std::size_t length = std::wcstombs(narrow.data(), wide, narrow.size());
        functions.freeTaskMemory(wide);
        if (length >= narrow.size()) {
            throw PathInfo::Error(failure);
        }
        return narrow.data();
    } catch (const SharedLibError& error) {
        throw PathInfo::Error(failure, error);
    }
}

std::string lowered(std::string text) {
    toLower(text);
    return text;
}

// Replaces every `placeholder` in `text`, whatever its case, and never looks at what it put in.
void replacePlaceholder(std::string& text, const std::string& placeholder,
                        const std::string& value) {
    const std::string foldedText = lowered(text);
    const std::string foldedPlaceholder = lowered(placeholder);
    std::size_t found = foldedText.find(foldedPlaceholder);
    if (found == std::string::npos) {
        return;
    }
    std::string result;
    std::size_t copied = 0;
    for (; found != std::string::npos; found = foldedText.find(foldedPlaceholder, copied)) {
        result.append(text, copied, found - copied);
        result += value;
        copied = found + placeholder.size();
    }
    result.append(text, copied);
    text = result;
}

// The first of two keys in the order of the table; null means none.
const std::string* earliest(const std::string* a, const std::string* b) {
    if (a == nullptr || b == nullptr) {
        return a == nullptr ? b : a;
    }
    return *b < *a ? b : a;
}

std::string foldedPath(const std::string& path) {
    std::string folded = lowered(path);
    replaceChar(folded, '\\', '/');
    return folded;
}

}  // namespace

PathInfo::Error::Error(const std::string& message) : ExceptionOf("PathInfo Error: " + message) {}

PathInfo::Error::Error(const std::string& message, const Exception& causedBy)
    : ExceptionOf("PathInfo Error: " + message, causedBy) {}

PathInfo::PathInfo() {
    const std::string host = hostNameOrPlaceholder();
    set("HOSTNAME", host);
    set("COMPUTERNAME", host);
    const std::string windows = windowsDirectory();
    set("SystemRoot", windows);
    set("WINDIR", windows);
}

PathInfo::PathInfo(const std::string& file) : PathInfo() {
    load(file);
}

PathInfo& PathInfo::instance() {
    if (singleton == nullptr) {
        singleton = new PathInfo();
        // Deliberately stored before the load: a file that can't be read leaves the built-in
        // keys in place.
        std::string file;
        try {
            file = programDirectory();
        } catch (const OsError& error) {
            throw Error("failed to get path of current executable", error);
        }
        singleton->load(file + "/pathinfo.ini");
    }
    return *singleton;
}

void PathInfo::destroy() {
    delete singleton;
    singleton = nullptr;
}

std::string PathInfo::lookup(const std::string& key, const std::string& file) {
    return instance().get(key, file);
}

std::string PathInfo::get(const std::string& key, const std::string& file) const {
    const auto spelled = foldedKeys.find(lowered(key));
    if (spelled == foldedKeys.end()) {
        throw Error("key \"" + key + "\" not found (1)");
    }
    const auto value = values.find(spelled->second.last);
    if (value == values.end()) {
        throw Error("key \"" + key + "\" not found (2)");
    }
    return file.empty() ? value->second : value->second + "\\" + file;
}

std::string PathInfo::relativePath(const std::string& path, const std::string& key) const {
    const std::string base = foldedPath(get(key, "")) + "/";
    return foldedPath(path).starts_with(base) ? path.substr(base.size()) : path;
}

void PathInfo::set(const std::string& key, const std::string& value) {
    std::string expanded = expand(value);
    fs::removeLastSeparator(expanded);
    values[key] = expanded;
    Spellings& spellings = foldedKeys[lowered(key)];
    spellings.all.insert(key);
    spellings.last = key;
}

void PathInfo::load(const std::string& file) {
    aux::IniReader reader;
    try {
        reader.read(file);
    } catch (const FsError& error) {
        throw Error("failed to load config file", error);
    }
    for (const auto& [key, value] : reader.entries()) {
        set(key, value);
    }
}

std::string PathInfo::expand(const std::string& value) const {
    std::string text = value;
    const std::string* former = nullptr;
    // Each key in the order of the table; those that the text doesn't refer to are passed over.
    while (const std::string* key = nextReference(lowered(text), former)) {
        const std::string& replacement = values.at(*key);
        replacePlaceholder(text, "%" + *key + "%", replacement);
        replacePlaceholder(text, "${" + *key + "}", replacement);
        replacePlaceholder(text, "{" + *key + "}", replacement);
        former = key;
    }
    return text;
}

const std::string* PathInfo::nextReference(const std::string& foldedText,
                                           const std::string* former) const {
    const std::string* next = nullptr;
    for (const auto& [opening, closing] : {std::pair('%', '%'), std::pair('{', '}')}) {
        std::size_t open = foldedText.find(opening);
        std::size_t close = 0;
        while (open != std::string::npos) {
            if (close <= open) {
                close = foldedText.find(closing, open + 1);
            }
            if (close == std::string::npos) {
                break;
            }
            next = earliest(next, keyBetween(foldedText, open, close, former));
            open = foldedText.find(opening, open + 1);
        }
    }
    return next;
}

const std::string* PathInfo::keyBetween(const std::string& foldedText, std::size_t open,
                                        std::size_t firstClose, const std::string* former) const {
    const std::string* next = nullptr;
    const std::string_view text = foldedText;
    for (std::size_t close = firstClose; close != std::string::npos;
         close = text.find(text[firstClose], close + 1)) {
        // A key may hold the closing character, too.
        const std::string_view candidate = text.substr(open + 1, close - open - 1);
        const auto known = foldedKeys.lower_bound(candidate);
        if (known == foldedKeys.end() || !known->first.starts_with(candidate)) {
            break;
        }
        if (known->first.size() == candidate.size()) {
            const std::set<std::string>& spellings = known->second.all;
            const auto key = former == nullptr ? spellings.begin() : spellings.upper_bound(*former);
            next = earliest(next, key == spellings.end() ? nullptr : &*key);
        }
    }
    return next;
}

}  // namespace vek
