// The WBEM relay: what ExecMethod and the relayed methods keep of a reply.
#include <gtest/gtest.h>

#include <memory>

#include "CSomIf.h"
#include "support/fake_som_service.h"
#include "support/trace_recorder.h"

namespace {

using qel_test::Action;

TEST(RelayTest, ExecMethodKeepsTheReplyAndFailsWithoutLosingOwnership) {
    qel_test::TempSysroot root;
    qel_test::FakeSomService service{root, 1};
    CSomIf som{"relay"};
    auto exec = [&](const char* cls, const char* method, IWbemClassObject** out) {
        return som.ExecMethod(const_cast<char*>(cls), const_cast<char*>(method), 0, nullptr,
                              nullptr, out, nullptr);
    };
    service.Push(Action::Answer("long;ReturnValue;3;string;Message;done;"));
    service.Push(Action::Answer("long;ReturnValue;9;", 0x80040001u));
    service.Push(Action::Answer("string;A;x;", 0x80080005u));  // the transport family: returned
    IWbemClassObject* out = nullptr;
    EXPECT_EQ(exec("C", "M", &out), 0);
    std::unique_ptr<IWbemClassObject> owned(out);
    EXPECT_EQ(*out->GetAs<long>("ReturnValue"), 3);
    EXPECT_EQ(*out->GetAs<std::string>("Message"), "done");
    // A service code sets ReturnValue, and the body's own item is appended on top of it.
    out = nullptr;
    EXPECT_EQ(exec("C", "M", &out), 0);
    owned.reset(out);
    EXPECT_EQ(out->size(), 2u);
    EXPECT_EQ(*out->GetAs<long>("ReturnValue"), 9);
    EXPECT_EQ(boost::any_cast<long>(out->begin()->second), static_cast<int>(0x80040001u));
    out = nullptr;
    EXPECT_EQ(exec("C", "M", &out), 0x80080005L);
    owned.reset(out);
    EXPECT_EQ(out->size(), 1u);  // the body, no ReturnValue
    qel_test::TraceRecorder traces;
    out = nullptr;
    EXPECT_EQ(exec(nullptr, "M", &out), -1);
    EXPECT_EQ(exec("C", nullptr, &out), -1);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(traces.Texts().size(), 2u);  // entry lines only
    service.Stop();
    EXPECT_EQ(exec("C", "M", &out), 0x80081001L);
    owned.reset(out);  // created before the exchange
    EXPECT_TRUE(out->empty());
    out = nullptr;
    EXPECT_EQ(som.ExecuteUpdateBackup("C", nullptr, &out), 0x80081001L);
    owned.reset(out);
    EXPECT_TRUE(out->empty());  // no ReturnValue for the transport family
}

}  // namespace
