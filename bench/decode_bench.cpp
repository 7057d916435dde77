// Decoding and encoding throughput against RapidJSON and nlohmann::json on
// the same content. Two floors: a memchr pass over the body, and the same
// output built from values decoded beforehand.
#include <benchmark/benchmark.h>

#include <cstring>
#include <map>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "CProviderManageInfo.h"
#include "CSerializedMsg.h"
#include "CTraceUtility.h"
#include "CUpDownSchedule.h"
#include "CVersionUpLog.h"
#include "bench_data.h"
#include "codec/item_index.h"
#include "common/record_json.h"

namespace {

const int64_t kSizes[] = {64 << 10, 1 << 20, 2 << 20, 4 << 20};

// Bodies are generated once per size and kept.
template <class Make>
const std::string& Cached(std::map<int64_t, std::string>& cache, int64_t size, Make make) {
    auto it = cache.find(size);
    if (it == cache.end())
        it = cache.emplace(size, make(size)).first;
    return it->second;
}

const std::string& Generic(int64_t n) {
    static std::map<int64_t, std::string> c;
    return Cached(c, n, [](int64_t s) { return bench::GenericBody(s); });
}
const std::string& GenericJson(int64_t n) {
    static std::map<int64_t, std::string> c;
    return Cached(c, n, [](int64_t s) { return bench::GenericJson(s); });
}
const CVelmora_DevProviderManageInfo& Provider(int64_t n) {
    static std::map<int64_t, CVelmora_DevProviderManageInfo> c;
    auto it = c.find(n);
    if (it == c.end())
        it = c.emplace(n, bench::Provider(n)).first;
    return it->second;
}
const std::string& ProviderText(int64_t n) {
    static std::map<int64_t, std::string> c;
    return Cached(c, n, [](int64_t s) { return bench::ProviderText(Provider(s)); });
}
const std::string& ProviderJson(int64_t n) {
    static std::map<int64_t, std::string> c;
    return Cached(c, n, [](int64_t s) { return bench::ProviderJson(Provider(s)); });
}
const std::string& PlansText(int64_t n) {
    static std::map<int64_t, std::string> c;
    return Cached(c, n, [](int64_t s) { return bench::PlansText(bench::Plans(s)); });
}
const std::string& PlansJson(int64_t n) {
    static std::map<int64_t, std::string> c;
    return Cached(c, n, [](int64_t s) { return bench::PlansJson(bench::Plans(s)); });
}

IWbemClassObject& GenericObject(int64_t n);

// A mutable copy for the readers, which take char*.
void Run(benchmark::State& state, const std::string& body, const std::function<void(char*)>& read) {
    std::string copy = body;
    for (auto _ : state)
        read(&copy[0]);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                            static_cast<int64_t>(body.size()));
}

void Floor_MemchrCount(benchmark::State& state) {
    const std::string& body = Generic(state.range(0));
    Run(state, body, [&](char* text) {
        std::size_t count = 0;
        for (const char* p = text;
             (p = static_cast<const char*>(std::memchr(p, ';', body.size() - (p - text)))) !=
             nullptr;
             ++p) {
            ++count;
        }
        benchmark::DoNotOptimize(count);
    });
}

void Generic_String2IWbem(benchmark::State& state) {
    CSerializedMsg codec("bench");
    Run(state, Generic(state.range(0)), [&](char* text) {
        IWbemClassObject obj;
        codec.String2IWbem(text, obj);
        benchmark::DoNotOptimize(obj.size());
    });
}

// The floor of the generic decoder: the same entries, decoded beforehand,
// built again through the object's own container (a string per name, a
// boost::any per value, nested objects rebuilt the same way).
void CopyEntries(const IWbemClassObject& from, IWbemClassObject& to) {
    for (const IWbemClassObject::Entry& entry : from) {
        IWbemClassObject* const* nested = boost::any_cast<IWbemClassObject*>(&entry.second);
        if (nested == nullptr) {
            to.push(entry.first, entry.second);
            continue;
        }
        IWbemClassObject* copy = new IWbemClassObject;
        CopyEntries(**nested, *copy);
        to.push(entry.first, copy);
    }
}

void Floor_Generic(benchmark::State& state) {
    const IWbemClassObject& decoded = GenericObject(state.range(0));
    Run(state, Generic(state.range(0)), [&](char*) {
        IWbemClassObject obj;
        CopyEntries(decoded, obj);
        benchmark::DoNotOptimize(obj.size());
    });
}

void Generic_RapidJsonDom(benchmark::State& state) {
    Run(state, GenericJson(state.range(0)), [](char* text) {
        rapidjson::Document doc;
        doc.Parse(text);
        benchmark::DoNotOptimize(doc.Size());
    });
}

void Generic_Nlohmann(benchmark::State& state) {
    Run(state, GenericJson(state.range(0)),
        [](char* text) { benchmark::DoNotOptimize(nlohmann::json::parse(text).size()); });
}

void StringArray2Array(benchmark::State& state) {
    static std::map<int64_t, std::string> c;
    CSerializedMsg codec("bench");
    Run(state, Cached(c, state.range(0), [](int64_t s) { return bench::StringArrayBody(s); }),
        [&](char* text) {
            std::vector<std::string> lines;
            codec.StringArray2Array(text, lines);
            benchmark::DoNotOptimize(lines.size());
        });
}

void StringArray_RapidJsonDom(benchmark::State& state) {
    static std::map<int64_t, std::string> c;
    Run(state, Cached(c, state.range(0), [](int64_t s) { return bench::StringArrayJson(s); }),
        [](char* text) {
            rapidjson::Document doc;
            doc.Parse(text);
            benchmark::DoNotOptimize(doc.Size());
        });
}

// The base decoder over the provider text: the yardstick of the tree reader.
void Provider_String2IWbem(benchmark::State& state) {
    CSerializedMsg codec("bench");
    Run(state, ProviderText(state.range(0)), [&](char* text) {
        IWbemClassObject obj;
        codec.String2IWbem(text, obj);
        benchmark::DoNotOptimize(obj.size());
    });
}

void Provider_RecordReader(benchmark::State& state) {
    CProviderManageInfo codec("bench");
    Run(state, ProviderText(state.range(0)), [&](char* text) {
        CVelmora_DevProviderManageInfo info;
        codec.toObject(text, info);
        benchmark::DoNotOptimize(info.DeviceInfo.size());
    });
}

// The floor of the record reader: the same records with their strings and
// vectors, copied from a decoded provider.
void Floor_ProviderRecords(benchmark::State& state) {
    const CVelmora_DevProviderManageInfo& decoded = Provider(state.range(0));
    Run(state, ProviderText(state.range(0)), [&](char*) {
        CVelmora_DevProviderManageInfo info = decoded;
        benchmark::DoNotOptimize(info.DeviceInfo.size());
    });
}

void Provider_TreeReader(benchmark::State& state) {
    CProviderManageInfo codec("bench");
    Run(state, ProviderText(state.range(0)), [&](char* text) {
        IWbemClassObject out;
        codec.toObject(text, out);
        benchmark::DoNotOptimize(out.size());
    });
}

// The same reader scanning for every search: the cost that the index removes.
void Provider_TreeReaderScanning(benchmark::State& state) {
    qel::SetItemIndexEnabled(false);
    Provider_TreeReader(state);
    qel::SetItemIndexEnabled(true);
}

void Provider_TreeReaderTraced(benchmark::State& state) {
    setenv("QEL_TRACE", "/dev/null", 1);
    CTraceUtility::Initialize("bench", 0xFFFFFFFFu);
    Provider_TreeReader(state);
    unsetenv("QEL_TRACE");
    CTraceUtility::Initialize("bench", 0xFFFFFFFFu);
}

void Provider_RapidJsonDom(benchmark::State& state) {
    Run(state, ProviderJson(state.range(0)), [](char* text) {
        rapidjson::Document doc;
        doc.Parse(text);
        benchmark::DoNotOptimize(doc.IsObject());
    });
}

void Provider_Nlohmann(benchmark::State& state) {
    Run(state, ProviderJson(state.range(0)),
        [](char* text) { benchmark::DoNotOptimize(nlohmann::json::parse(text).size()); });
}

void Plans_RecordReader(benchmark::State& state) {
    CVersionUpLog codec("bench");
    Run(state, PlansText(state.range(0)), [&](char* text) {
        std::vector<CVELMORA_UpdatePlans> plans;
        codec.toObject(text, plans);
        benchmark::DoNotOptimize(plans.size());
    });
}

void Floor_PlansRecords(benchmark::State& state) {
    static std::map<int64_t, std::vector<CVELMORA_UpdatePlans>> c;
    auto it = c.find(state.range(0));
    if (it == c.end())
        it = c.emplace(state.range(0), bench::Plans(state.range(0))).first;
    const std::vector<CVELMORA_UpdatePlans>& decoded = it->second;
    Run(state, PlansText(state.range(0)), [&](char*) {
        std::vector<CVELMORA_UpdatePlans> plans = decoded;
        benchmark::DoNotOptimize(plans.size());
    });
}

void Plans_TreeReader(benchmark::State& state) {
    CUpDownSchedule codec("bench");
    Run(state, PlansText(state.range(0)), [&](char* text) {
        IWbemClassObject out;
        codec.String2UpdatePlans(text, out);
        benchmark::DoNotOptimize(out.size());
    });
}

void Plans_RapidJsonDom(benchmark::State& state) {
    Run(state, PlansJson(state.range(0)), [](char* text) {
        rapidjson::Document doc;
        doc.Parse(text);
        benchmark::DoNotOptimize(doc.Size());
    });
}

void Registration_TreeReader(benchmark::State& state) {
    static std::map<int64_t, std::string> c;
    CUpDownSchedule codec("bench");
    Run(state, Cached(c, state.range(0), [](int64_t s) { return bench::RegistrationText(s); }),
        [&](char* text) {
            IWbemClassObject out;
            codec.String2RegisterUpdateModule(text, out);
            benchmark::DoNotOptimize(out.size());
        });
}

void Conformity_TreeReader(benchmark::State& state) {
    static std::map<int64_t, std::string> c;
    CUpDownSchedule codec("bench");
    Run(state, Cached(c, state.range(0), [](int64_t s) { return bench::ConformityText(s); }),
        [&](char* text) {
            IWbemClassObject out;
            codec.toObject2(text, out);
            benchmark::DoNotOptimize(out.size());
        });
}

void Conformity_TreeReaderScanning(benchmark::State& state) {
    qel::SetItemIndexEnabled(false);
    Conformity_TreeReader(state);
    qel::SetItemIndexEnabled(true);
}

void Schedule_RecordReader(benchmark::State& state) {
    CUpDownSchedule codec("bench");
    CVELMORA_DownloadSetting setting;
    setting.WebSiteUrl = "https://updates.example/qel";
    CVELMORA_DownloadSchedule schedule;
    std::string text;
    codec.toString(setting, schedule, text);
    Run(state, text, [&](char* body) {
        CVELMORA_DownloadSchedule s;
        CVELMORA_DownloadSetting d;
        codec.toObject(body, s, d);
        benchmark::DoNotOptimize(d.WebSiteUrl.size());
    });
}

// --- Encoding ------------------------------------------------------------------

IWbemClassObject& GenericObject(int64_t n) {
    static std::map<int64_t, std::unique_ptr<IWbemClassObject>> c;
    auto it = c.find(n);
    if (it == c.end()) {
        std::unique_ptr<IWbemClassObject> obj(new IWbemClassObject);
        std::string copy = Generic(n);
        CSerializedMsg("bench").String2IWbem(&copy[0], *obj);
        it = c.emplace(n, std::move(obj)).first;
    }
    return *it->second;
}

void Encode_IWbem2String(benchmark::State& state) {
    IWbemClassObject& obj = GenericObject(state.range(0));
    CSerializedMsg codec("bench");
    for (auto _ : state) {
        std::string out;
        codec.IWbem2String(obj, out);
        benchmark::DoNotOptimize(out.size());
    }
    state.SetBytesProcessed(state.iterations() *
                            static_cast<int64_t>(Generic(state.range(0)).size()));
}

void Encode_RapidJsonWriter(benchmark::State& state) {
    rapidjson::Document doc;
    doc.Parse(GenericJson(state.range(0)).c_str());
    for (auto _ : state) {
        rapidjson::StringBuffer buffer;
        rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
        doc.Accept(writer);
        benchmark::DoNotOptimize(buffer.GetSize());
    }
    state.SetBytesProcessed(state.iterations() *
                            static_cast<int64_t>(GenericJson(state.range(0)).size()));
}

void Encode_NlohmannDump(benchmark::State& state) {
    nlohmann::json doc = nlohmann::json::parse(GenericJson(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(doc.dump().size());
    state.SetBytesProcessed(state.iterations() *
                            static_cast<int64_t>(GenericJson(state.range(0)).size()));
}

void Encode_ProviderToString(benchmark::State& state) {
    const CVelmora_DevProviderManageInfo& info = Provider(state.range(0));
    CProviderManageInfo codec("bench");
    for (auto _ : state) {
        std::string out;
        codec.toString(info, out);
        benchmark::DoNotOptimize(out.size());
    }
    state.SetBytesProcessed(state.iterations() *
                            static_cast<int64_t>(ProviderText(state.range(0)).size()));
}

void Encode_ProviderNlohmannDump(benchmark::State& state) {
    nlohmann::json doc = Provider(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(doc.dump().size());
    state.SetBytesProcessed(state.iterations() *
                            static_cast<int64_t>(ProviderJson(state.range(0)).size()));
}

void Sizes(benchmark::internal::Benchmark* b) {
    for (int64_t size : kSizes)
        b->Arg(size);
    b->Unit(benchmark::kMicrosecond);
}

}  // namespace

BENCHMARK(Floor_MemchrCount)->Apply(Sizes);
BENCHMARK(Generic_String2IWbem)->Apply(Sizes);
BENCHMARK(Floor_Generic)->Apply(Sizes);
BENCHMARK(Generic_RapidJsonDom)->Apply(Sizes);
BENCHMARK(Generic_Nlohmann)->Apply(Sizes);
BENCHMARK(StringArray2Array)->Apply(Sizes);
BENCHMARK(StringArray_RapidJsonDom)->Apply(Sizes);
BENCHMARK(Provider_String2IWbem)->Apply(Sizes);
BENCHMARK(Provider_RecordReader)->Apply(Sizes);
BENCHMARK(Floor_ProviderRecords)->Apply(Sizes);
BENCHMARK(Provider_TreeReader)->Apply(Sizes);
BENCHMARK(Provider_TreeReaderTraced)->Apply(Sizes);
BENCHMARK(Provider_TreeReaderScanning)
    ->Arg(64 << 10)
    ->Arg(256 << 10)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(Provider_RapidJsonDom)->Apply(Sizes);
BENCHMARK(Provider_Nlohmann)->Apply(Sizes);
BENCHMARK(Plans_RecordReader)->Apply(Sizes);
BENCHMARK(Floor_PlansRecords)->Apply(Sizes);
BENCHMARK(Plans_TreeReader)->Apply(Sizes);
BENCHMARK(Plans_RapidJsonDom)->Apply(Sizes);
BENCHMARK(Registration_TreeReader)->Apply(Sizes);
BENCHMARK(Conformity_TreeReader)->Apply(Sizes);
BENCHMARK(Conformity_TreeReaderScanning)
    ->Arg(64 << 10)
    ->Arg(256 << 10)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(Schedule_RecordReader)->Unit(benchmark::kNanosecond);
BENCHMARK(Encode_IWbem2String)->Apply(Sizes);
BENCHMARK(Encode_RapidJsonWriter)->Apply(Sizes);
BENCHMARK(Encode_NlohmannDump)->Apply(Sizes);
BENCHMARK(Encode_ProviderToString)->Apply(Sizes);
BENCHMARK(Encode_ProviderNlohmannDump)->Apply(Sizes);
