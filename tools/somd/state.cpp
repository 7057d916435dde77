#include "state.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "common/record_json.h"
#include "fd_io.h"

namespace somd {

static void to_json(nlohmann::json& j, const AliveParameter& p) {
    j = nlohmann::json{{"Value", p.value}, {"Type", p.type}};
}

static void from_json(const nlohmann::json& j, AliveParameter& p) {
    p.value = j.at("Value").get<std::string>();
    p.type = j.at("Type").get<unsigned>();
}

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(State, downloadSetting, downloadSchedule,
                                                updateSchedule, priorities, authorityHolder,
                                                appliedUpdates, downloadLog, resultLog, versionLog,
                                                alive)

namespace {

// Values are bytes, JSON text is UTF-8. A string that is not valid UTF-8,
// or that happens to begin with the marker, is stored as the marker followed
// by its bytes in hex; every other string is stored as it is. Decoding undoes
// exactly that, so no byte sequence is lost or altered.
const char kHexMarker[] = "\x01hex:";
const std::size_t kHexMarkerSize = sizeof kHexMarker - 1;

bool IsUtf8(const std::string& text) {
    try {
        (void)nlohmann::json(text).dump();
        return true;
    } catch (const nlohmann::json::type_error&) {
        return false;
    }
}

bool HasMarker(const std::string& text) {
    return text.compare(0, kHexMarkerSize, kHexMarker) == 0;
}

std::string Encode(const std::string& text) {
    if (IsUtf8(text) && !HasMarker(text))
        return text;
    static const char kDigits[] = "0123456789abcdef";
    std::string out = kHexMarker;
    for (unsigned char c : text) {
        out += kDigits[c >> 4];
        out += kDigits[c & 15];
    }
    return out;
}

int HexDigit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

std::string Decode(const std::string& text) {
    if (!HasMarker(text))
        return text;
    const std::size_t digits = text.size() - kHexMarkerSize;
    if (digits % 2 != 0)
        throw std::runtime_error("a hex-encoded value has an odd number of digits");
    std::string out;
    for (std::size_t i = kHexMarkerSize; i < text.size(); i += 2) {
        const int high = HexDigit(text[i]), low = HexDigit(text[i + 1]);
        if (high < 0 || low < 0)
            throw std::runtime_error("a hex-encoded value has a digit that is not hex");
        out += static_cast<char>(high * 16 + low);
    }
    return out;
}

// Applies `convert` to every string and every object key of `value`.
nlohmann::json MapStrings(const nlohmann::json& value, std::string (*convert)(const std::string&)) {
    if (value.is_string())
        return convert(value.get_ref<const std::string&>());
    if (value.is_array()) {
        nlohmann::json out = nlohmann::json::array();
        for (const nlohmann::json& element : value)
            out.push_back(MapStrings(element, convert));
        return out;
    }
    if (value.is_object()) {
        nlohmann::json out = nlohmann::json::object();
        for (auto it = value.begin(); it != value.end(); ++it)
            out[convert(it.key())] = MapStrings(it.value(), convert);
        return out;
    }
    return value;
}

std::string ReadWhole(const std::string& path, bool& missing) {
    std::ifstream in(path, std::ios::binary);
    missing = false;
    if (!in) {
        const int error = errno;
        struct stat info;
        if (stat(path.c_str(), &info) != 0 && errno == ENOENT) {
            missing = true;
            return "";
        }
        throw std::runtime_error("state file " + path + " cannot be read: " + std::strerror(error) +
                                 " (left untouched; --fresh-state " + "starts afresh)");
    }
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// The file validates when it is exactly what saving its own content gives
// back: every key present and spelt right, no extra key, every number of the
// type and range of its field.
void Validate(const nlohmann::json& file, const State& state) {
    const nlohmann::json difference = nlohmann::json::diff(file, nlohmann::json(state));
    if (difference.empty())
        return;
    const nlohmann::json& first = difference.front();
    const std::string path = first.value("path", "");
    const std::string op = first.value("op", "");
    const char* problem = op == "add"      ? "is missing"
                          : op == "remove" ? "is not a known key"
                                           : "has a value out of its type or range";
    throw std::runtime_error("\"" + (path.empty() ? std::string("/") : path) + "\" " + problem);
}

}  // namespace

std::optional<State> LoadState(const std::string& path) {
    bool missing = false;
    const std::string text = ReadWhole(path, missing);
    if (missing)
        return std::nullopt;
    try {
        const nlohmann::json file = MapStrings(nlohmann::json::parse(text), Decode);
        State state = file.get<State>();
        Validate(file, state);
        return state;
    } catch (const std::exception& e) {
        throw std::runtime_error("state file " + path + " does not validate: " + e.what() +
                                 " (left untouched; --fresh-state starts afresh)");
    }
}

namespace {

std::string Directory(const std::string& path) {
    std::string::size_type slash = path.rfind('/');
    return slash == std::string::npos ? "." : (slash == 0 ? "/" : path.substr(0, slash));
}

}  // namespace

bool WriteFileAtomically(const std::string& path, const std::string& text) {
    const std::string temporary = path + ".tmp";
    int fd = open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd < 0)
        return false;
    bool ok = qel::WriteAll(fd, text) && fsync(fd) == 0;
    ok = close(fd) == 0 && ok;
    if (!ok || std::rename(temporary.c_str(), path.c_str()) != 0) {
        const int error = errno;
        unlink(temporary.c_str());
        errno = error;
        return false;
    }
    // The rename itself reaches the disk with the directory.
    int dir = open(Directory(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dir >= 0) {
        fsync(dir);
        close(dir);
    }
    return true;
}

bool SaveState(const State& state, const std::string& path) {
    // Compact: the file holds the data and nothing that grows with the
    // number of saves.
    return WriteFileAtomically(path, MapStrings(nlohmann::json(state), Encode).dump() + "\n");
}

}  // namespace somd
