// The indexed forward searches give exactly what plain scanning gives, on
// generated texts with items dropped, reordered and cut, and on the fuzz
// seed corpora.
#include <gtest/gtest.h>

#include <dirent.h>

#include <fstream>
#include <functional>
#include <random>
#include <sstream>

#include "CProviderManageInfo.h"
#include "CUpDownSchedule.h"
#include "codec/item_index.h"
#include "provider_info/plain_text.h"
#include "support/sample_providers.h"
#include "support/text_buffer.h"

namespace {

// Every reader that searches forward, its result written out as text.
std::string ReadAll(const std::string& text) {
    std::string result;
    auto run = [&](const std::function<void(char*, IWbemClassObject&)>& read) {
        qel_test::TextBuffer buffer(text);
        IWbemClassObject out;
        read(buffer.get(), out);
        CSerializedMsg("dump").IWbem2String(out, result);
        result += "|";
    };
    CProviderManageInfo provider("idx");
    CUpDownSchedule schedule("idx");
    run([&](char* t, IWbemClassObject& o) { provider.toObject(t, o); });
    run([&](char* t, IWbemClassObject& o) { schedule.String2UpdatePlans(t, o); });
    run([&](char* t, IWbemClassObject& o) { schedule.String2RegisterUpdateModule(t, o); });
    run([&](char* t, IWbemClassObject& o) { schedule.toObject2(t, o); });
    run([&](char* t, IWbemClassObject& o) { schedule.toObject(t, o); });
    return result;
}

std::string Compare(const std::string& text) {
    qel::SetItemIndexEnabled(false);
    const std::string plain = ReadAll(text);
    qel::SetItemIndexEnabled(true);
    const std::string indexed = ReadAll(text);
    return plain == indexed ? std::string() : "differs on: " + text.substr(0, 200);
}

// The items of a text, to drop, swap and cut at random.
std::vector<std::string> Items(const std::string& text) {
    std::vector<std::string> items;
    std::string::size_type at = 0;
    while (at < text.size()) {
        std::string::size_type end = at;
        for (int i = 0; i < 3 && end != std::string::npos; ++i)
            end = text.find(';', end + (i ? 1 : 0));
        if (end == std::string::npos)
            break;
        items.push_back(text.substr(at, end + 1 - at));
        at = end + 1;
    }
    return items;
}

TEST(ItemIndexTest, SameResultsAsScanningOnMutatedTexts) {
    std::string provider;
    CVelmora_DevProviderManageInfo info = qel_test::SampleDevProvider();
    for (int i = 0; i < 4; ++i)
        info.DeviceInfo.push_back(info.DeviceInfo[i % 3]);
    qel::pm::WritePlainText(info, provider);
    const std::string plans =
        "class[];UpdatePlansList;;string;ProviderName;P1;string;DisplayName;D1;"
        "string;DependencyName;;string;ProviderName;P2;int;UpdatePriority;4;"
        "string;DependencyName;N2;string;ProviderName;P3;string;DependencyName;N3;";
    const std::string conformity =
        "string;AppKey;k;string;CheckUpdateModuleConformityInput;;string;"
        "UpdateModuleConformityList;;string;ProviderName;P;string;VendorName;V;string;"
        "UpdateModuleKind;K;class;ModuleInfo;;string;UniqueName;U;class;AttrInfo;;int;Priority;2;"
        "class[];FileInfo;;string;Kind;k;string;Md5Hash;h;string;ProviderName;Q;string;"
        "VendorName;W;string;UpdateModuleKind;L;class;ModuleInfo;;string;DispName;D;";
    std::mt19937 random(20261123);
    for (const std::string& base : {provider, plans + plans + plans, conformity + conformity}) {
        const std::vector<std::string> items = Items(base);
        for (int round = 0; round < 60; ++round) {
            std::vector<std::string> mutated = items;
            for (int k = random() % 4; k > 0 && !mutated.empty(); --k) {
                mutated.erase(mutated.begin() + random() % mutated.size());
            }
            if (mutated.size() > 1 && random() % 2) {
                std::swap(mutated[random() % mutated.size()], mutated[random() % mutated.size()]);
            }
            std::string text;
            for (const std::string& item : mutated)
                text += item;
            text = text.substr(0, text.size() - (random() % 3 == 0 ? random() % 40 : 0));
            ASSERT_EQ(Compare(text), "");
        }
    }
}

TEST(ItemIndexTest, SameResultsOnTheFuzzCorpora) {
    int files = 0;
    for (const char* target : {"provider_tree", "plans", "conformity"}) {
        const std::string dir = std::string(QEL_SOURCE_DIR) + "/fuzz/corpus/" + target;
        DIR* listing = opendir(dir.c_str());
        ASSERT_NE(listing, nullptr) << dir;
        while (struct dirent* entry = readdir(listing)) {
            if (entry->d_name[0] == '.')
                continue;
            std::ifstream in(dir + "/" + entry->d_name, std::ios::binary);
            std::stringstream text;
            text << in.rdbuf();
            EXPECT_EQ(Compare(text.str()), "") << entry->d_name;
            ++files;
        }
        closedir(listing);
    }
    EXPECT_GT(files, 4);
}

}  // namespace
