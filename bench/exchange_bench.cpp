// Exchanges through CSomIf against a real somd, against raw Unix-socket
// round trips of the same bytes; device naming against libpci.
#include <benchmark/benchmark.h>

#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>

extern "C" {
#include <pci/pci.h>
}

#include "CSomIf.h"
#include "bench_data.h"
#include "common/record_json.h"
#include "discovery/device_namer.h"

namespace {

const char kBig[] = "VELMORA_Bench4M";
const char kThousand[] = "VELMORA_Bench1000";

// somd in a sandbox with two large providers, for the whole run.
class Service {
  public:
    static Service& Get() {
        static Service service;
        return service;
    }
    const std::string& socket() const { return socket_; }
    std::string RawRequest(const std::string& cls, const std::string& method,
                           const std::string& body) const {
        char head[32];
        std::snprintf(head, sizeof head, "%08zucafefeed", 33 + cls.size() + method.size());
        char tail[32];
        std::snprintf(tail, sizeof tail, "00000000%08zu", body.size());
        return head + cls + "/" + method + tail + body;
    }
    ~Service() {
        if (pid_ > 0) {
            kill(pid_, SIGTERM);
            waitpid(pid_, nullptr, 0);
        }
        std::system(("rm -rf " + root_).c_str());
    }

  private:
    Service() {
        char pattern[] = "/tmp/qel-bench.XXXXXX";
        root_ = mkdtemp(pattern);
        std::system(("bash " QEL_SOURCE_DIR "/scripts/make-sandbox.sh " + root_).c_str());
        setenv("QEL_SYSROOT", root_.c_str(), 1);
        nlohmann::json providers;
        providers["DeviceProviders"][kBig] = bench::Provider(3900 * 1024);
        CVelmora_DevProviderManageInfo thousand = bench::Provider(1 << 20);
        thousand.DeviceInfo.resize(1000, thousand.DeviceInfo.back());
        providers["DeviceProviders"][kThousand] = thousand;
        std::ofstream(root_ + "/opt/velmora/qel/som/scenario/providers.json") << providers.dump();
        socket_ = root_ + "/run/som.sock";
        pid_ = fork();
        if (pid_ == 0) {
            execl(QEL_SOMD_PATH, "somd", static_cast<char*>(nullptr));
            _exit(127);
        }
        struct stat info;
        for (int i = 0; i < 300 && stat(socket_.c_str(), &info) != 0; ++i)
            usleep(20000);
    }
    std::string root_;
    std::string socket_;
    pid_t pid_ = -1;
};

// One raw round trip: connect, send, read to the close.
std::size_t RawExchange(const std::string& path, const std::string& request, char* buffer,
                        std::size_t size) {
    int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    struct sockaddr_un addr = {};
    addr.sun_family = AF_UNIX;
    path.copy(addr.sun_path, sizeof addr.sun_path - 1);
    std::size_t got = 0;
    if (connect(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) == 0) {
        send(fd, request.data(), request.size(), MSG_NOSIGNAL);
        ssize_t n;
        while ((n = read(fd, buffer + got, size - got)) > 0)
            got += static_cast<std::size_t>(n);
    }
    close(fd);
    return got;
}

void Exchange_SmallCall(benchmark::State& state) {
    Service::Get();
    CSomIf som("bench");
    for (auto _ : state) {
        std::string value;
        unsigned type = 0;
        benchmark::DoNotOptimize(som.AliveMonitorGetParameter("Interval", value, type));
    }
}

void Exchange_SmallRawFloor(benchmark::State& state) {
    const Service& service = Service::Get();
    const std::string request = service.RawRequest(
        "VELMORA_ToolServiceWD", "AliveMonitorGetParameter", "string;Name;Interval;");
    char buffer[4096];
    for (auto _ : state) {
        benchmark::DoNotOptimize(RawExchange(service.socket(), request, buffer, sizeof buffer));
    }
}

void Exchange_4MiBReply(benchmark::State& state) {
    Service::Get();
    CSomIf som("bench");
    std::size_t bytes = 0;
    for (auto _ : state) {
        std::string reply;
        som.TransMessage("GetProviderManageInfo", kBig, reply);
        bytes = reply.size();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes));
}

void Exchange_4MiBRawFloor(benchmark::State& state) {
    const Service& service = Service::Get();
    const std::string request = service.RawRequest(kBig, "GetProviderManageInfo", "");
    std::unique_ptr<char[]> buffer(new char[0x400000]);
    std::size_t bytes = 0;
    for (auto _ : state)
        bytes = RawExchange(service.socket(), request, buffer.get(), 0x400000);
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes));
}

void Naming_ProviderQuery1000Devices(benchmark::State& state) {
    Service::Get();
    CSomIf som("bench");
    for (auto _ : state) {
        CVelmora_DevProviderManageInfo info;
        som.GetProviderManageInfo(kThousand, info);
        benchmark::DoNotOptimize(info.DeviceInfo.size());
    }
}

std::vector<CVelmora_DeviceInfo> ThousandDevices() {
    CVelmora_DevProviderManageInfo info = bench::Provider(1 << 20);
    info.DeviceInfo.resize(1000, info.DeviceInfo.back());
    return info.DeviceInfo;
}

void Naming_Batched1000(benchmark::State& state) {
    Service::Get();  // QEL_SYSROOT with the real pci.ids
    std::vector<CVelmora_DeviceInfo> devices = ThousandDevices();
    const std::string name = "bench";
    for (auto _ : state) {
        qel::discovery::DeviceNamer namer(name, /*batch=*/true);
        for (CVelmora_DeviceInfo& device : devices)
            namer.Name(device);
    }
}

void Naming_Single1000(benchmark::State& state) {
    Service::Get();
    std::vector<CVelmora_DeviceInfo> devices = ThousandDevices();
    CSomIf som("bench");
    for (auto _ : state) {
        for (CVelmora_DeviceInfo& device : devices)
            som.GetDeviceName(device);
    }
}

// The floor of a single GetDeviceName, which reads the database at every
// call: 1,000 times open the file, read it whole into one buffer kept for
// the run, and close it. The lookup itself comes on top.
void Naming_SingleReadFloor1000(benchmark::State& state) {
    std::vector<char> text(4 << 20);
    for (auto _ : state) {
        for (int call = 0; call < 1000; ++call) {
            FILE* file = std::fopen("/usr/share/hwdata/pci.ids", "rb");
            benchmark::DoNotOptimize(std::fread(text.data(), 1, text.size(), file));
            std::fclose(file);
        }
    }
}

// The same read, then every line end found with memchr: what a line-by-line
// search costs when the vendor is at the end of the file.
void Naming_SingleScanFloor1000(benchmark::State& state) {
    std::vector<char> text(4 << 20);
    for (auto _ : state) {
        std::size_t lines = 0;
        for (int call = 0; call < 1000; ++call) {
            FILE* file = std::fopen("/usr/share/hwdata/pci.ids", "rb");
            const std::size_t n = std::fread(text.data(), 1, text.size(), file);
            std::fclose(file);
            const char* end = text.data() + n;
            for (const char* p = text.data();
                 (p = static_cast<const char*>(std::memchr(p, '\n', end - p))) != nullptr; ++p)
                ++lines;
        }
        benchmark::DoNotOptimize(lines);
    }
}

void Naming_LibpciLoadAnd1000(benchmark::State& state) {
    std::vector<CVelmora_DeviceInfo> devices = ThousandDevices();
    std::vector<std::pair<int, int>> ids;
    for (const CVelmora_DeviceInfo& d : devices) {
        ids.emplace_back(std::stoi(d.DeviceId.substr(8, 4), nullptr, 16),
                         std::stoi(d.DeviceId.substr(13, 4), nullptr, 16));
    }
    char name[256];
    for (auto _ : state) {
        struct pci_access* pci = pci_alloc();
        pci_set_name_list_path(pci, const_cast<char*>("/usr/share/hwdata/pci.ids"), 0);
        pci->numeric_ids = 0;
        for (const auto& id : ids) {
            benchmark::DoNotOptimize(
                pci_lookup_name(pci, name, sizeof name,
                                PCI_LOOKUP_VENDOR | PCI_LOOKUP_DEVICE | PCI_LOOKUP_NO_NUMBERS,
                                id.first, id.second));
        }
        pci_cleanup(pci);
    }
}

}  // namespace

BENCHMARK(Exchange_SmallCall)->Unit(benchmark::kMicrosecond);
BENCHMARK(Exchange_SmallRawFloor)->Unit(benchmark::kMicrosecond);
BENCHMARK(Exchange_4MiBReply)->Unit(benchmark::kMicrosecond);
BENCHMARK(Exchange_4MiBRawFloor)->Unit(benchmark::kMicrosecond);
BENCHMARK(Naming_ProviderQuery1000Devices)->Unit(benchmark::kMicrosecond);
BENCHMARK(Naming_Batched1000)->Unit(benchmark::kMicrosecond);
BENCHMARK(Naming_Single1000)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(Naming_SingleReadFloor1000)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(Naming_SingleScanFloor1000)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(Naming_LibpciLoadAnd1000)->Unit(benchmark::kMicrosecond);
