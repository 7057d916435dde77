// Decoding and encoding throughput against RapidJSON and nlohmann::json on
// the same content. Two floors: a memchr pass over the body, and the same
// output built from values decoded beforehand and laid out flat.
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
#include "common/record_fields.h"
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
template <class Record>
const std::vector<Record>& ListRecords(int64_t n) {
    static std::map<int64_t, std::vector<Record>> c;
    auto it = c.find(n);
    if (it == c.end())
        it = c.emplace(n, bench::Records<Record>(n)).first;
    return it->second;
}
template <class Record>
const std::string& ListText(int64_t n) {
    static std::map<int64_t, std::string> c;
    return Cached(c, n, [](int64_t s) { return bench::ListText(ListRecords<Record>(s)); });
}
template <class Record>
const std::string& ListJson(int64_t n) {
    static std::map<int64_t, std::string> c;
    return Cached(c, n, [](int64_t s) { return bench::ListJson(ListRecords<Record>(s)); });
}
const std::string& PlansText(int64_t n) {
    return ListText<CVELMORA_UpdatePlans>(n);
}
const std::string& RegistrationText(int64_t n) {
    static std::map<int64_t, std::string> c;
    return Cached(c, n, [](int64_t s) { return bench::RegistrationText(s); });
}

// Values decoded beforehand, laid out flat in the order they are used, so
// that a floor reading them pays for building its output and not for
// chasing a decoded tree through memory.
class FlatValues {
  public:
    void AddText(const char* text, std::size_t length) {
        pieces_.push_back(Piece{bytes_.size(), length});
        bytes_.append(text, length);
    }
    void AddText(const std::string& text) { AddText(text.data(), text.size()); }
    void AddNumber(long number) { numbers_.push_back(number); }

    // Reads the values back in the order they were added.
    class Reader {
      public:
        explicit Reader(const FlatValues& values) : values_(values) {}
        std::size_t TextLength() const { return values_.pieces_[piece_].length; }
        const char* TextAndAdvance() {
            return values_.bytes_.data() + values_.pieces_[piece_++].at;
        }
        std::string Text() {
            const std::size_t length = TextLength();
            return std::string(TextAndAdvance(), length);
        }
        long Number() { return values_.numbers_[number_++]; }

      private:
        const FlatValues& values_;
        std::size_t piece_ = 0;
        std::size_t number_ = 0;
    };

  private:
    struct Piece {
        std::size_t at;
        std::size_t length;
    };
    std::string bytes_;
    std::vector<Piece> pieces_;
    std::vector<long> numbers_;
};

// The entries of a decoded object, flat: a kind per entry, the names and
// values in a FlatValues. Build() makes the same entries again through the
// object's own container, as cheaply as it allows.
class FlatEntries {
  public:
    explicit FlatEntries(const IWbemClassObject& obj) { Add(obj); }
    void Build(IWbemClassObject& to) const {
        FlatValues::Reader reader(values_);
        std::size_t next = 0;
        Build(next, reader, to);
    }

  private:
    enum class Kind {
        kString,
        kInt,
        kLong,
        kULong,
        kBool,
        kStrings,
        kNested,
        kList,
        kListPtr,
        kEnd
    };
    typedef std::vector<IWbemClassObject*> Objects;

    void Add(const IWbemClassObject& obj) {
        for (const IWbemClassObject::Entry& entry : obj) {
            values_.AddText(entry.first);
            const boost::any& v = entry.second;
            if (const auto* s = boost::any_cast<std::string>(&v)) {
                Push(Kind::kString).AddText(*s);
            } else if (const auto* i = boost::any_cast<int>(&v)) {
                Push(Kind::kInt).AddNumber(*i);
            } else if (const auto* l = boost::any_cast<long>(&v)) {
                Push(Kind::kLong).AddNumber(*l);
            } else if (const auto* u = boost::any_cast<unsigned long>(&v)) {
                Push(Kind::kULong).AddNumber(static_cast<long>(*u));
            } else if (const auto* b = boost::any_cast<bool>(&v)) {
                Push(Kind::kBool).AddNumber(*b);
            } else if (const auto* a = boost::any_cast<std::vector<std::string>>(&v)) {
                Push(Kind::kStrings).AddNumber(static_cast<long>(a->size()));
                for (const std::string& element : *a)
                    values_.AddText(element);
            } else if (const auto* list = boost::any_cast<Objects>(&v)) {
                AddList(Kind::kList, *list);
            } else if (const auto* listPtr = boost::any_cast<Objects*>(&v)) {
                AddList(Kind::kListPtr, **listPtr);
            } else {
                Push(Kind::kNested);
                Add(**boost::any_cast<IWbemClassObject*>(&v));
                Push(Kind::kEnd);
            }
        }
    }
    // An object list: its length, then each element's entries and an end.
    void AddList(Kind kind, const Objects& list) {
        Push(kind).AddNumber(static_cast<long>(list.size()));
        for (const IWbemClassObject* element : list) {
            Add(*element);
            Push(Kind::kEnd);
        }
    }
    Objects BuildList(std::size_t& next, FlatValues::Reader& in) const {
        Objects list;
        list.reserve(static_cast<std::size_t>(in.Number()));
        for (std::size_t i = list.capacity(); i != 0; --i) {
            list.push_back(new IWbemClassObject);
            Build(next, in, *list.back());
        }
        return list;
    }
    FlatValues& Push(Kind kind) {
        kinds_.push_back(kind);
        return values_;
    }

    void Build(std::size_t& next, FlatValues::Reader& in, IWbemClassObject& to) const {
        while (next < kinds_.size()) {
            const Kind kind = kinds_[next++];
            if (kind == Kind::kEnd)
                return;
            const std::size_t nameLength = in.TextLength();
            const char* name = in.TextAndAdvance();
            switch (kind) {
                case Kind::kString:
                    to.pushPlain(name, nameLength, in.Text());
                    break;
                case Kind::kInt:
                    to.pushPlain(name, nameLength, static_cast<int>(in.Number()));
                    break;
                case Kind::kLong:
                    to.pushPlain(name, nameLength, in.Number());
                    break;
                case Kind::kULong:
                    to.pushPlain(name, nameLength, static_cast<unsigned long>(in.Number()));
                    break;
                case Kind::kBool:
                    to.pushPlain(name, nameLength, in.Number() != 0);
                    break;
                case Kind::kStrings: {
                    std::vector<std::string> elements;
                    elements.reserve(static_cast<std::size_t>(in.Number()));
                    for (std::size_t i = elements.capacity(); i != 0; --i)
                        elements.push_back(in.Text());
                    to.pushPlain(name, nameLength, std::move(elements));
                    break;
                }
                case Kind::kNested: {
                    IWbemClassObject* nested = new IWbemClassObject;
                    Build(next, in, *nested);
                    to.push(std::string(name, nameLength), nested);
                    break;
                }
                case Kind::kList:
                    to.push(std::string(name, nameLength), BuildList(next, in));
                    break;
                case Kind::kListPtr:
                    to.push(std::string(name, nameLength), new Objects(BuildList(next, in)));
                    break;
                case Kind::kEnd:
                    break;
            }
        }
    }

    std::vector<Kind> kinds_;
    FlatValues values_;
};

// Typed records, flat: every field's value in visiting order.
template <class Record>
class FlatRecords {
  public:
    explicit FlatRecords(const std::vector<Record>& records) : count_(records.size()) {
        Collect collect{values_};
        for (const Record& record : records)
            qel::VisitFields(record, collect);
    }
    void Build(std::vector<Record>& out) const {
        FlatValues::Reader reader(values_);
        Assign assign{reader};
        out.reserve(count_);
        for (std::size_t i = 0; i < count_; ++i) {
            Record record;
            qel::VisitFields(record, assign);
            out.push_back(std::move(record));
        }
    }

  private:
    struct Collect {
        FlatValues& values;
        void String(const char*, const std::string& v) { values.AddText(v); }
        void Int(const char*, int v) { values.AddNumber(v); }
    };
    struct Assign {
        FlatValues::Reader& in;
        void String(const char*, std::string& v) {
            const std::size_t length = in.TextLength();
            v.assign(in.TextAndAdvance(), length);
        }
        void Int(const char*, int& v) { v = static_cast<int>(in.Number()); }
    };
    std::size_t count_;
    FlatValues values_;
};

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

// The floor of the generic decoder: the same entries built from values
// decoded beforehand (flat), through the object's own container.
void Floor_Generic(benchmark::State& state) {
    const FlatEntries flat(GenericObject(state.range(0)));
    Run(state, Generic(state.range(0)), [&](char*) {
        IWbemClassObject obj;
        flat.Build(obj);
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

template <class Record>
void List_RecordReader(benchmark::State& state) {
    CVersionUpLog codec("bench");
    Run(state, ListText<Record>(state.range(0)), [&](char* text) {
        std::vector<Record> list;
        codec.toObject(text, list);
        benchmark::DoNotOptimize(list.size());
    });
}

template <class Record>
void Floor_ListRecords(benchmark::State& state) {
    const FlatRecords<Record> flat(ListRecords<Record>(state.range(0)));
    Run(state, ListText<Record>(state.range(0)), [&](char*) {
        std::vector<Record> list;
        flat.Build(list);
        benchmark::DoNotOptimize(list.size());
    });
}

template <class Record>
void List_RapidJsonDom(benchmark::State& state) {
    Run(state, ListJson<Record>(state.range(0)), [](char* text) {
        rapidjson::Document doc;
        doc.Parse(text);
        benchmark::DoNotOptimize(doc.Size());
    });
}

template <class Record>
void List_Nlohmann(benchmark::State& state) {
    Run(state, ListJson<Record>(state.range(0)),
        [](char* text) { benchmark::DoNotOptimize(nlohmann::json::parse(text).size()); });
}

// The base decoder over the bytes of a forward reader: its yardstick.
void Plans_String2IWbem(benchmark::State& state) {
    CSerializedMsg codec("bench");
    Run(state, PlansText(state.range(0)), [&](char* text) {
        IWbemClassObject obj;
        codec.String2IWbem(text, obj);
        benchmark::DoNotOptimize(obj.size());
    });
}

void Registration_String2IWbem(benchmark::State& state) {
    CSerializedMsg codec("bench");
    Run(state, RegistrationText(state.range(0)), [&](char* text) {
        IWbemClassObject obj;
        codec.String2IWbem(text, obj);
        benchmark::DoNotOptimize(obj.size());
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

// The floors of the forward readers: the same trees, an object per plan or
// module, built from values decoded beforehand.
template <class Decode>
void TreeFloor(benchmark::State& state, const std::string& body, Decode decode) {
    std::string copy = body;
    IWbemClassObject decoded;
    decode(&copy[0], decoded);
    const FlatEntries flat(decoded);
    Run(state, body, [&](char*) {
        IWbemClassObject obj;
        flat.Build(obj);
        benchmark::DoNotOptimize(obj.size());
    });
}

void Floor_Plans(benchmark::State& state) {
    CUpDownSchedule codec("bench");
    TreeFloor(state, PlansText(state.range(0)),
              [&](char* text, IWbemClassObject& out) { codec.String2UpdatePlans(text, out); });
}

void Floor_Registration(benchmark::State& state) {
    CUpDownSchedule codec("bench");
    TreeFloor(state, RegistrationText(state.range(0)), [&](char* text, IWbemClassObject& out) {
        codec.String2RegisterUpdateModule(text, out);
    });
}

void Registration_TreeReader(benchmark::State& state) {
    CUpDownSchedule codec("bench");
    Run(state, RegistrationText(state.range(0)), [&](char* text) {
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
#define QEL_LIST_BENCHMARKS(Record)                              \
    BENCHMARK_TEMPLATE(List_RecordReader, Record)->Apply(Sizes); \
    BENCHMARK_TEMPLATE(Floor_ListRecords, Record)->Apply(Sizes); \
    BENCHMARK_TEMPLATE(List_RapidJsonDom, Record)->Apply(Sizes); \
    BENCHMARK_TEMPLATE(List_Nlohmann, Record)->Apply(Sizes);
QEL_LIST_BENCHMARKS(CVELMORA_UpdatePlans)
QEL_LIST_BENCHMARKS(CVELMORA_QelVersionInfo)
QEL_LIST_BENCHMARKS(CVELMORA_VersionUpdateLog)
BENCHMARK(Plans_String2IWbem)->Apply(Sizes);
BENCHMARK(Plans_TreeReader)->Apply(Sizes);
BENCHMARK(Registration_String2IWbem)->Apply(Sizes);
BENCHMARK(Registration_TreeReader)->Apply(Sizes);
BENCHMARK(Floor_Plans)->Apply(Sizes);
BENCHMARK(Floor_Registration)->Apply(Sizes);
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
