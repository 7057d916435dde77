#include "state.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <stdexcept>

#include "common/record_json.h"

namespace somd {

static void to_json(nlohmann::json& j, const AliveParameter& p) {
    j = nlohmann::json{{"Value", p.value}, {"Type", p.type}};
}

static void from_json(const nlohmann::json& j, AliveParameter& p) {
    p.value = j.value("Value", "");
    p.type = j.value("Type", 0u);
}

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(State, downloadSetting, downloadSchedule,
                                                updateSchedule, priorities, authorityHolder,
                                                appliedUpdates, downloadLog, resultLog, versionLog,
                                                alive)

State LoadState(const std::string& path) {
    std::ifstream in(path);
    if (!in)
        return State();
    try {
        return nlohmann::json::parse(in).get<State>();
    } catch (const nlohmann::json::exception& e) {
        throw std::runtime_error(path + ": " + e.what());
    }
}

namespace {

bool WriteFully(int fd, const std::string& data) {
    std::size_t done = 0;
    while (done < data.size()) {
        ssize_t n = write(fd, data.data() + done, data.size() - done);
        if (n <= 0)
            return false;
        done += static_cast<std::size_t>(n);
    }
    return true;
}

std::string Directory(const std::string& path) {
    std::string::size_type slash = path.rfind('/');
    return slash == std::string::npos ? "." : (slash == 0 ? "/" : path.substr(0, slash));
}

}  // namespace

bool SaveState(const State& state, const std::string& path) {
    const std::string text = nlohmann::json(state).dump(2) + "\n";
    const std::string temporary = path + ".tmp";
    int fd = open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd < 0)
        return false;
    bool ok = WriteFully(fd, text) && fsync(fd) == 0;
    ok = close(fd) == 0 && ok;
    if (!ok || std::rename(temporary.c_str(), path.c_str()) != 0) {
        unlink(temporary.c_str());
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

}  // namespace somd
