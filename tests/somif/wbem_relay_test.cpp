// The WBEM relay: what ExecMethod, TransUmMessage and the relayed methods
// keep of a reply.
#include <gtest/gtest.h>

#include <memory>

#include "CSomIf.h"
#include "support/fake_som_service.h"
#include "support/trace_recorder.h"

namespace {

using qel_test::Action;
using qel_test::FakeSomService;

class RelayTest : public ::testing::Test {
  protected:
    qel_test::TempSysroot root;
    FakeSomService service{root, 1};
    CSomIf som{"relay"};

    HRESULT Exec(const char* cls, const char* method, IWbemClassObject** out) {
        return som.ExecMethod(const_cast<char*>(cls), const_cast<char*>(method), 0, nullptr,
                              nullptr, out, nullptr);
    }
};

TEST_F(RelayTest, ExecMethodDecodesTheReplyOnTopOfReturnValue) {
    service.Push(Action::Answer("long;ReturnValue;3;string;Message;done;"));
    service.Push(Action::Answer("long;ReturnValue;9;", 0x80040001u));
    IWbemClassObject* out = nullptr;
    EXPECT_EQ(Exec("C", "M", &out), 0);
    std::unique_ptr<IWbemClassObject> owned(out);
    EXPECT_EQ(*out->GetAs<long>("ReturnValue"), 3);
    EXPECT_EQ(*out->GetAs<std::string>("Message"), "done");
    // A service code (not of the transport family) sets ReturnValue, and the
    // body's own ReturnValue item is appended on top of it.
    out = nullptr;
    EXPECT_EQ(Exec("C", "M", &out), 0);
    owned.reset(out);
    EXPECT_EQ(out->size(), 2u);
    EXPECT_EQ(*out->GetAs<long>("ReturnValue"), 9);
    EXPECT_EQ(boost::any_cast<long>(out->begin()->second), static_cast<int>(0x80040001u));
}

TEST_F(RelayTest, ExecMethodFailures) {
    qel_test::TraceRecorder traces;
    IWbemClassObject* out = nullptr;
    EXPECT_EQ(Exec(nullptr, "M", &out), -1);
    EXPECT_EQ(Exec("C", nullptr, &out), -1);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(traces.Texts().size(), 2u);                      // entry lines only
    service.Push(Action::Answer("string;A;x;", 0x80080005u));  // the transport family: returned
    EXPECT_EQ(Exec("C", "M", &out), 0x80080005L);
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(out->size(), 1u);  // the body, no ReturnValue
    delete out;
    out = nullptr;
    service.Stop();
    EXPECT_EQ(Exec("C", "M", &out), 0x80081001L);
    ASSERT_NE(out, nullptr);  // created before the exchange
    EXPECT_TRUE(out->empty());
    out->Release();
}

TEST_F(RelayTest, RelayedMethodsGiveNoReturnValueForTheTransportFamily) {
    service.Stop();
    IWbemClassObject* fresh = nullptr;
    EXPECT_EQ(som.ExecuteUpdateBackup("C", nullptr, &fresh), 0x80081001L);
    EXPECT_TRUE(fresh->empty());  // no ReturnValue for the transport family
    delete fresh;
}

}  // namespace
