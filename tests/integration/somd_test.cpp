// Real somd processes, grouped by what breaks: bytes, state across restarts
// and kills, input checking, the authority, the process status through bulk
// runs, limits (connections, deadlines, descriptors), instances, and starting
// and stopping.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <thread>

#include "CSomIf.h"
#include "common/record_json.h"
#include "support/fake_som_service.h"
#include "support/somd_process.h"
#include "support/test_data.h"

namespace {

using namespace qel_test;
using std::chrono::seconds;
typedef std::chrono::steady_clock Clock;

const char kUpdateManager[] = "VELMORA_UpdateManager";
const HRESULT kAuthorityHeld = 0x8000A001L;
const LONG kUpdating = 0x8001;

// Whole records compared; printed with the bytes that are not UTF-8 replaced.
template <typename Got, typename Want>
void ExpectSame(const Got& got, const Want& want) {
    const nlohmann::json a(got), b(want);
    EXPECT_TRUE(a == b) << a.dump(1, ' ', true, nlohmann::json::error_handler_t::replace);
}

// Does the service answer a request (within 3 s of starting)?
bool Served() {
    std::vector<CVELMORA_QelVersionInfo> versions;
    for (int i = 0; i < 300 && CSomIf("probe").CollectQelVersion(versions) != 0; ++i)
        usleep(10000);
    return !versions.empty();
}

// `count` clients that each sent `bytes`.
std::vector<int> Clients(const std::string& socket, int count, const std::string& bytes = "") {
    std::vector<int> fds;
    for (int i = 0; i < count; ++i) {
        fds.push_back(ConnectTo(socket));
        send(fds.back(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    }
    return fds;
}

void CloseAll(const std::vector<int>& fds) {
    for (int fd : fds)
        close(fd);
}

class SomdTest : public ::testing::Test {
  protected:
    TempSysroot root;
    SomdProcess somd{root};
    const std::string socket = somd.SocketPath();
    CSomIf som{"it"};

    void Restart(const std::vector<std::string>& options = {}) {
        ASSERT_EQ(somd.Stop(), 0);
        somd.Start(options);
    }
    std::string Alive(const std::string& name) {
        std::string value;
        unsigned type = 0;
        return som.AliveMonitorGetParameter(name, value, type) == 0 ? value : "error";
    }
    // Starts UpdateAll in a thread; returns once the status says "updating".
    std::thread UpdateInBackground(HRESULT& result, LONG& reboot) {
        std::thread run([&] { result = CSomIf("runner").UpdateAll(reboot); });
        LONG status = 0;
        for (int i = 0; i < 400 && status != kUpdating; ++i, usleep(5000))
            som.GetQELStatus(status);
        EXPECT_EQ(status, kUpdating);
        return run;
    }
};

// --- Bytes: any byte sequence is stored and served back as it was sent,
// after a restart too; what somd serves reads back as the scenario's own
// records, empty lists included (no entry made up where the scenario has none).
TEST_F(SomdTest, AnyBytesComeBackByteForByteAndRecordsAsTheScenarioHasThem) {
    const std::string values[] = {"\xff", "caf\xe9", "\x01hex:4z", "\xc3\xa9 %3B"};
    const auto setting = nlohmann::json{
        {"ProxyUser", values[0]},
        {"WebSiteUrl", values[1]},
        {"CacheServerUser", values[2]},
        {"ProxyPassword", values[3] + "p;q"},  // ";" escaped here
        {"DownloadType", 2}}.get<CVELMORA_DownloadSetting>();
    const auto schedule =
        nlohmann::json{{"IsAutoSetting", true}, {"Time", "03:00"}}.get<CVELMORA_DownloadSchedule>();
    const auto update =
        nlohmann::json{{"RepeatType", 2}, {"DayOfWeek", "Sunday"}}.get<CVELMORA_UpdateSchedule>();
    ASSERT_EQ(som.SetAutoDownloadSetting(setting, schedule), 0);
    ASSERT_EQ(som.SetAutoUpdateSetting(update), 0);
    for (const std::string& value : values)
        ASSERT_EQ(som.AliveMonitorSetParameter("N" + value, value), 0);
    Restart();
    CVELMORA_DownloadSetting readSetting;
    CVELMORA_DownloadSchedule readSchedule;
    CVELMORA_UpdateSchedule readUpdate;
    ASSERT_EQ(som.GetAutoDownloadSetting(readSetting, readSchedule), 0);
    ASSERT_EQ(som.GetAutoUpdateSetting(readUpdate), 0);
    ExpectSame(std::tie(readSetting, readSchedule, readUpdate),
               std::tie(setting, schedule, update));
    for (const std::string& value : values)
        EXPECT_TRUE(Alive("N" + value) == value) << value.size();

    const std::string dir = root.Path("/opt/velmora/qel/som/scenario/");
    const nlohmann::json providers = nlohmann::json::parse(ReadFile(dir + "providers.json"));
    for (const auto& entry : providers.at("DeviceProviders").items()) {
        CVelmora_DevProviderManageInfo got;
        ASSERT_EQ(som.GetProviderManageInfo(entry.key(), got), 0) << entry.key();
        for (CVelmora_DeviceInfo& device : got.DeviceInfo)  // named from the host's pci.ids
            device.DeviceName = device.DeviceVendorName = "";
        ExpectSame(got, entry.value().get<CVelmora_DevProviderManageInfo>());
    }
    for (const auto& entry : providers.at("ToolProviders").items()) {
        CVelmora_ToolProviderManageInfo got;
        ASSERT_EQ(som.GetProviderManageInfo(entry.key(), got), 0) << entry.key();
        ExpectSame(got, entry.value().get<CVelmora_ToolProviderManageInfo>());
    }
    std::vector<CVELMORA_QelVersionInfo> versions;
    ASSERT_EQ(som.CollectQelVersion(versions), 0);
    ExpectSame(versions, nlohmann::json::parse(ReadFile(dir + "versions.json")));
}

// --- State: acknowledged means on disk, whatever ends somd (three kill -9 in
// a stream of writes); an empty monitor list stays empty; the file does not
// grow with each acknowledgement. A state file that cannot be read or does
// not validate stops the start and is left untouched; --fresh-state starts
// from the scenario instead.
TEST_F(SomdTest, AcknowledgedChangesSurviveKill9AndBadStateFilesStopTheStart) {
    for (int round = 0; round < 3; ++round) {
        std::atomic<int> acknowledged{-1};
        std::thread writer([&] {
            CSomIf client("writer");
            for (int i = 0;
                 client.AliveMonitorSetParameter("Seq" + std::to_string(i), std::to_string(i)) == 0;
                 ++i)
                acknowledged = i;
        });
        while (acknowledged < 0)
            usleep(1000);
        usleep(round * 15000);
        somd.Stop(SIGKILL);
        writer.join();
        somd.Start();  // over the socket file that the killed somd left
        for (int i = 0; i <= acknowledged.load(); ++i)
            ASSERT_EQ(Alive("Seq" + std::to_string(i)), std::to_string(i)) << "round " << round;
    }
    ASSERT_EQ(som.AliveMonitorClearParameters(), 0);
    const std::string path = somd.StatePath(), good = ReadFile(path);
    for (int i = 0; i < 20; ++i)
        ASSERT_EQ(som.AliveMonitorClearParameters(), 0);
    EXPECT_EQ(ReadFile(path), good);
    Restart();
    EXPECT_EQ(Alive("Seq0"), "error");
    EXPECT_EQ(Alive("Interval"), "error");  // the scenario's defaults stay away
    ASSERT_EQ(som.AliveMonitorUpdateParameters(), 0);
    EXPECT_EQ(Alive("Interval"), "30");

    ASSERT_EQ(somd.Stop(), 0);
    const std::string field = "\"DownloadType\":0";
    ASSERT_NE(good.find(field), std::string::npos) << good;
    const auto with = [&](const std::string& replacement) {
        return std::string(good).replace(good.find(field), field.size(), replacement);
    };
    const std::string bad[] = {"<a link to itself>",
                               "<a directory>",
                               "{}",
                               "not json",
                               with("\"DownloadTyp\":0"),
                               with("\"DownloadType\":1099511627776"),
                               with("\"DownloadType\":1.9"),
                               with("\"DownloadType\":\"2\""),
                               with("\"DownloadType\":0,\"Extra\":1")};
    for (const std::string& text : bad) {
        std::remove(path.c_str());
        if (text == "<a link to itself>")
            symlink(path.c_str(), path.c_str());
        if (text == "<a directory>")
            mkdir(path.c_str(), 0700);
        std::ofstream(path) << text;  // fails on a loop or a directory
        const std::string before = FileIdentity(path);
        std::string message;
        EXPECT_EQ(somd.StartExpectingExit(message), 1) << text;
        EXPECT_NE(message.find("state file " + path), std::string::npos) << message;
        EXPECT_EQ(FileIdentity(path), before);
    }
    somd.Start({"--fresh-state"});
    EXPECT_EQ(Alive("Interval"), "30");
    ASSERT_EQ(som.AliveMonitorSetParameter("Interval", "45"), 0);
    Restart();
    EXPECT_EQ(Alive("Interval"), "45");
}

// --- Input checking: whatever does not parse, or names a method that its
// class does not serve, is refused, changes nothing and stops nothing.
// --- Authority: one key, kept byte for byte across a restart, holds it; somd
// refuses other keys where a request carries one.
TEST_F(SomdTest, MalformedRequestsAndOtherKeysAreRefusedAndChangeNothing) {
    CVELMORA_UpdateSchedule update;
    update.DayOfWeek = "Sunday";
    ASSERT_EQ(som.SetAutoUpdateSetting(update), 0);
    const auto frame = [](const std::string& target, const std::string& body, unsigned result = 0) {
        const std::size_t slash = target.rfind('/');
        return FakeSomService::ReplyText(target.substr(0, slash), target.substr(slash + 1), result,
                                         body);
    };
    const unsigned kUnknownMethod = 0x8000A003u, kBadRequest = 0x8000A004u;
    const std::string longName = std::string(3000, 'C') + "/M",
                      bogus = "Bogus/GetOperatingAuthority";
    const std::string setUpdate = "VELMORA_UpdateManager/SetAutoUpdateSetting";
    const std::string setDownload = "VELMORA_UpdateManager/SetAutoDownloadSetting";
    const std::string aliveSet = "VELMORA_ToolServiceWD/AliveMonitorSetParameter";
    const std::pair<std::string, std::string> cases[] = {
        // an empty reply: closed without one
        {"", ""},
        {"garbage that is not a request", ""},
        {"00000099cafefeedC/M0000000000000000", ""},     // header cut short
        {"00000035deadbeefC/M0000000000000000", ""},     // wrong magic
        {"00000035cafefeedC/M0000000000000010abc", ""},  // body cut short
        {"00000035cafefeedC/M00000000xxxxxxxx", frame("C/M", "", kBadRequest)},
        {"00000035cafefeedC/M0000000099999999", frame("C/M", "", kBadRequest)},  // too long
        {frame("C/M", ""), frame("C/M", "", kUnknownMethod)},
        {frame(longName, ""), frame(longName, "", kUnknownMethod)},
        {frame(setUpdate, ""), frame(setUpdate, "", kBadRequest)},
        {frame(setUpdate, "garbage;;;"), frame(setUpdate, "", kBadRequest)},
        {frame(setDownload, ""), frame(setDownload, "", kBadRequest)},
        {frame(setDownload, "string;x;\xff;"), frame(setDownload, "", kBadRequest)},
        {frame(bogus, "string;AppKey;k;"), frame(bogus, "", kUnknownMethod)},
        {frame(aliveSet, "string;Name;N;string;Value;p;q;"), frame(aliveSet, "", kBadRequest)},
    };
    for (const auto& [request, reply] : cases)
        EXPECT_EQ(RawExchange(socket, request), reply) << request.substr(0, 60);
    CVELMORA_UpdateSchedule read;
    ASSERT_EQ(som.GetAutoUpdateSetting(read), 0);
    ExpectSame(read, update);

    const std::string first = "\xff", second = "\xfe";  // "k" above took nothing
    EXPECT_EQ(som.GetOperatingAuthority(kUpdateManager, first), 0);
    Restart();
    EXPECT_EQ(som.GetOperatingAuthority(kUpdateManager, first), 0);
    EXPECT_EQ(som.GetOperatingAuthority(kUpdateManager, second), kAuthorityHeld);
    EXPECT_EQ(som.ReleaseOperatingAuthority(kUpdateManager, second), 0x8000A002L);
    CVelmora_PriorityUpdateParam priority;
    priority.AppKey = second;
    priority.DeviceID = "PCIROOT-8086-10FB-0000";
    EXPECT_EQ(som.SetUpdatePriority("VELMORA_NicProvider", priority), kAuthorityHeld);
    priority.AppKey = first;
    EXPECT_EQ(som.SetUpdatePriority("VELMORA_NicProvider", priority), 0);
    EXPECT_EQ(som.ReleaseOperatingAuthority(kUpdateManager, first), 0);
    EXPECT_EQ(som.GetOperatingAuthority(kUpdateManager, second), 0);
}

// --- Process status: it moves through a bulk run and back; a run that a kill
// cut short is reset at the next start and logged.
TEST_F(SomdTest, BulkRunsMoveTheStatusAndAKilledRunIsResetAndLogged) {
    HRESULT result = -1;
    LONG reboot = -1, status = -1;
    UpdateInBackground(result, reboot).join();
    EXPECT_EQ(result, 0);
    EXPECT_EQ(reboot, 1);
    som.GetQELStatus(status);
    EXPECT_EQ(status, 0);
    std::vector<std::string> lines;
    ASSERT_EQ(som.CollectResultLog("k", lines), 0);
    EXPECT_EQ(lines.size(), 3u);
    EXPECT_EQ(som.UpdateAll(reboot), 0);  // nothing left to update is no failure
    EXPECT_EQ(reboot, 0);
    EXPECT_EQ(som.RollbackAll(reboot), 0);
    std::thread cut = UpdateInBackground(result, reboot);  // updating again after it
    somd.Stop(SIGKILL);
    cut.join();
    somd.Start();
    som.GetQELStatus(status);
    EXPECT_EQ(status, 0);
    ASSERT_EQ(som.CollectResultLog("k", lines), 0);
    ASSERT_FALSE(lines.empty());
    EXPECT_NE(lines.back().find("interrupted by a restart"), std::string::npos) << lines.back();
}

// --- Limits: 200 idle and trickling clients, more than the cap, keep no new
// client from being served and leave no descriptor behind; a trickler is cut
// off at the whole-request deadline; slow senders do not delay a SIGTERM.
TEST_F(SomdTest, IdleAndTricklingClientsAreBoundedAndCutOff) {
    Restart({"--max-connections", "64"});
    usleep(100000);  // the start-up probe's connection closes
    const int before = OpenDescriptorCount(std::to_string(somd.pid()));
    const std::vector<int> clients = Clients(socket, 200);
    const auto start = Clock::now();
    for (int round = 0; round < 3; ++round, usleep(500000)) {
        for (std::size_t i = 0; i < clients.size(); i += 4)  // a byte now and then from some
            send(clients[i], "0", 1, MSG_NOSIGNAL);
    }
    EXPECT_TRUE(Served());
    EXPECT_LT(Clock::now() - start, seconds(13));
    CloseAll(clients);
    usleep(400000);
    EXPECT_EQ(OpenDescriptorCount(std::to_string(somd.pid())), before);

    // A sound header announcing 100 bytes of body, which then come one by one.
    struct pollfd trickler = {Clients(socket, 1, "00000035cafefeedC/M0000000000000100")[0], POLLIN,
                              0};
    const auto connected = Clock::now();
    while (poll(&trickler, 1, 500) == 0 && Clock::now() - connected < seconds(10))
        send(trickler.fd, "x", 1, MSG_NOSIGNAL);
    EXPECT_GT(Clock::now() - connected, seconds(4));
    EXPECT_LT(Clock::now() - connected, seconds(7));
    close(trickler.fd);

    const std::vector<int> slow = Clients(socket, 20, "0000");
    usleep(100000);
    const auto stopAt = Clock::now();
    EXPECT_EQ(somd.Stop(), 0);
    EXPECT_LT(Clock::now() - stopAt, seconds(2));
    CloseAll(slow);
}

// With few descriptors allowed, accept fails with EMFILE: somd backs off
// (no busy loop: little CPU), says so, and serves again afterwards.
TEST_F(SomdTest, RunningOutOfDescriptorsBacksOffAndRecovers) {
    somd.Stop();
    int errFd = -1;
    const pid_t pid = SpawnSomd({}, &errFd, [] {
        struct rlimit limit = {32, 32};
        setrlimit(RLIMIT_NOFILE, &limit);
    });
    ASSERT_TRUE(Served());
    const std::vector<int> clients = Clients(socket, 60);
    EXPECT_EQ(std::count(clients.begin(), clients.end(), -1), 0);
    usleep(1500000);
    CloseAll(clients);
    EXPECT_TRUE(Served());
    kill(pid, SIGTERM);
    int status = 0;
    struct rusage usage = {};
    wait4(pid, &status, 0, &usage);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_LT(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec, 1);
    const std::string log = ReadAll(errFd);
    EXPECT_NE(log.find("accept: Too many open files; retrying"), std::string::npos) << log;
}

// --- Instances: a second somd is refused, names the running one and touches
// neither its socket nor the state; a somd removes its own socket at the
// end, and only its own.
// --- Starting and stopping: started by a socket unit, somd serves on the
// socket passed as fd 3 and leaves it in place; started alone, it binds its
// own with the mode and group asked for; bad option values are usage errors.
TEST_F(SomdTest, OneServicePerInstallationSocketActivationAndStandaloneStart) {
    ASSERT_EQ(som.AliveMonitorClearParameters(), 0);  // a state file
    const std::string before = FileIdentity(socket) + FileIdentity(somd.StatePath());
    std::string message;
    EXPECT_EQ(somd.StartExpectingExit(message), 1);
    EXPECT_NE(message.find("another somd already serves this installation"), std::string::npos)
        << message;
    EXPECT_NE(message.find("socket " + socket), std::string::npos);
    EXPECT_EQ(FileIdentity(socket) + FileIdentity(somd.StatePath()), before);
    EXPECT_TRUE(Served());
    unlink(socket.c_str());
    int replacement = BindTo(socket);
    ASSERT_GE(replacement, 0);
    EXPECT_EQ(somd.Stop(), 0);
    EXPECT_EQ(access(socket.c_str(), F_OK), 0);
    close(replacement);
    unlink(socket.c_str());

    const int listener = BindTo(socket);
    ASSERT_EQ(listen(listener, 16), 0);
    const std::string inode = FileIdentity(socket);
    int errFd = -1;
    pid_t pid = SpawnSomd({}, &errFd, [listener] {
        dup2(listener, 3);
        fcntl(3, F_SETFD, 0);  // inherited even when the listener was fd 3
        setenv("LISTEN_FDS", "1", 1);
        setenv("LISTEN_PID", std::to_string(getpid()).c_str(), 1);
    });
    close(listener);
    EXPECT_TRUE(Served());
    kill(pid, SIGTERM);
    EXPECT_EQ(WaitExit(pid, 2000), 0);
    EXPECT_EQ(FileIdentity(socket), inode);
    EXPECT_NE(ReadAll(errFd).find("(passed by systemd)"), std::string::npos);

    for (const auto& args : std::vector<std::vector<std::string>>{{"--max-connections", "0"},
                                                                  {"--socket-mode", "999"},
                                                                  {"--work-ms", "12abc"},
                                                                  {"--socket-mode"},
                                                                  {"--bogus", "1"}}) {
        EXPECT_EQ(WaitExit(SpawnSomd(args, &errFd), 2000), 2) << args[0];
        EXPECT_NE(ReadAll(errFd).find("usage: somd"), std::string::npos);
    }
    unlink(socket.c_str());
    somd.Start({"--socket-mode", "0640", "--socket-group", "root"});
    ASSERT_TRUE(Served());  // served: the mode is set before anyone connects
    struct stat info = {};
    stat(socket.c_str(), &info);
    EXPECT_EQ(info.st_mode & 0777, 0640u);
    EXPECT_EQ(info.st_gid, 0u);
    EXPECT_EQ(somd.Stop(), 0);
    EXPECT_NE(access(socket.c_str(), F_OK), 0);
}

}  // namespace
