// The WBEM relay: ExecMethod, TransUmMessage and the ten relayed methods.
#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "CSomIf.h"
#include "support/fake_som_service.h"
#include "support/trace_recorder.h"

namespace {

using qel_test::Action;
using qel_test::FakeSomService;
using qel_test::TempSysroot;
using qel_test::TraceRecorder;

const char kExecSig[] =
    "HRESULT CSomIf::ExecMethod(OLECHAR*, OLECHAR*, long int, IWbemContext*, IWbemClassObject*, "
    "IWbemClassObject**, IWbemCallResult**)";

class RelayTest : public ::testing::Test {
protected:
    TempSysroot root;
    FakeSomService service{root, 1};
    CSomIf som{"relay"};

    HRESULT Exec(const char* cls, const char* method, IWbemClassObject* in,
                 IWbemClassObject** out) {
        return som.ExecMethod(const_cast<char*>(cls), const_cast<char*>(method), 0, nullptr, in,
                              out, nullptr);
    }
};

TEST_F(RelayTest, ExecMethodSendsInParamsAndDecodesTheReply) {
    service.Push(Action::Answer("long;ReturnValue;3;string;Message;done;"));
    IWbemClassObject in;
    in.push("AppKey", std::string("k;1"));
    in.push("Force", true);
    IWbemClassObject* out = nullptr;
    EXPECT_EQ(Exec("VELMORA_UpdateManager", "ExecuteUpdate", &in, &out), 0);
    std::unique_ptr<IWbemClassObject> owned(out);
    EXPECT_EQ(service.LastRequest().bytes,
              "00000067cafefeedVELMORA_UpdateManager/ExecuteUpdate0000000000000036"
              "string;AppKey;k%!@1;bool;Force;true;");
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(*out->GetAs<long>("ReturnValue"), 3);
    EXPECT_EQ(*out->GetAs<std::string>("Message"), "done");
}

TEST_F(RelayTest, ExecMethodServiceCodeGoesToReturnValueAndBodyStandsOnTop) {
    service.Push(Action::Answer("", 0x00000005u));
    service.Push(Action::Answer("long;ReturnValue;9;", 0x80040001u));
    IWbemClassObject out;
    IWbemClassObject* outPtr = &out;
    EXPECT_EQ(Exec("C", "M", nullptr, &outPtr), 0);
    EXPECT_EQ(service.LastRequest().bytes, "00000035cafefeedC/M0000000000000000");
    EXPECT_EQ(*out.GetAs<long>("ReturnValue"), 5);
    EXPECT_EQ(Exec("C", "M", nullptr, &outPtr), 0);
    // The setter replaced the value, then the body's own item was appended.
    EXPECT_EQ(*out.GetAs<long>("ReturnValue"), 9);
    EXPECT_EQ(out.size(), 2u);
    EXPECT_EQ(boost::any_cast<long>(out.begin()->second),
              static_cast<long>(static_cast<int>(0x80040001u)));
}

TEST_F(RelayTest, ExecMethodTransportFailures) {
    service.Push(Action::Answer("", 0x80080005u));
    IWbemClassObject* out = nullptr;
    EXPECT_EQ(Exec("C", "M", nullptr, &out), 0x80080005L);
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(out->Get("ReturnValue"), nullptr);
    delete out;
    out = nullptr;
    service.Stop();
    EXPECT_EQ(Exec("C", "M", nullptr, &out), 0x80081001L);
    ASSERT_NE(out, nullptr);
    EXPECT_TRUE(out->empty());
    out->Release();
}

TEST_F(RelayTest, ExecMethodNullNameReturnsMinusOneWithOnlyTheEntryTrace) {
    TraceRecorder traces;
    IWbemClassObject* out = nullptr;
    EXPECT_EQ(Exec(nullptr, "M", nullptr, &out), -1);
    EXPECT_EQ(Exec("C", nullptr, nullptr, &out), -1);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(traces.Texts(), (std::vector<std::string>{std::string("[ENTER] ") + kExecSig,
                                                        std::string("[ENTER] ") + kExecSig}));
    EXPECT_EQ(service.RequestCount(), 0u);
}

TEST_F(RelayTest, ExecMethodExitTracePrintsTheResult) {
    TraceRecorder traces;
    service.Stop();
    IWbemClassObject* out = nullptr;
    Exec("C", "M", nullptr, &out);
    delete out;
    EXPECT_TRUE(traces.Contains(std::string("[LEAVE] ") + kExecSig + ", rc=-2146955263"));
}

// Every relayed entry point: its wire method and its entry trace.
struct Relayed {
    const char* name;
    const char* wire;
    bool traceClass;
    HRESULT (CSomIf::*call)(std::string, IWbemClassObject*, IWbemClassObject**);
};

const Relayed kRelayed[] = {
    {"Reboot", "Reboot", true, &CSomIf::Reboot},
    {"ExecuteUpdateApplyCheck", "ExecuteUpdateApplyCheck", true, &CSomIf::ExecuteUpdateApplyCheck},
    {"RegisterUpdateModule", "RegisterUpdateModule", true, &CSomIf::RegisterUpdateModule},
    {"SetDependencyInfo", "SetDependencyInfo", true, &CSomIf::SetDependencyInfo},
    {"ReleaseOperatingAuthority", "ReleaseOperatingAuthority", true,
     &CSomIf::ReleaseOperatingAuthority},
    {"GetOperationAuthority", "GetOperatingAuthority", true, &CSomIf::GetOperationAuthority},
    {"ExecuteUpdateRestore", "ExecuteUpdateRestore", true, &CSomIf::ExecuteUpdateRestore},
    {"ExecutePreUpdate", "ExecutePreUpdate", true, &CSomIf::ExecutePreUpdate},
    {"ExecuteUpdateBackup", "ExecuteUpdateBackup", true, &CSomIf::ExecuteUpdateBackup},
    {"ExecuteUpdate", "ExecuteUpdate", false, &CSomIf::ExecuteUpdate},
};

TEST_F(RelayTest, EveryRelayedMethodSendsItsWireNameAndKeepsOnlyReturnValue) {
    for (const Relayed& r : kRelayed) {
        TraceRecorder traces;
        service.Push(Action::Answer("long;ReturnValue;4;string;Extra;x;", 0x00000002u));
        IWbemClassObject in;
        in.push("AppKey", std::string("key"));
        IWbemClassObject* out = nullptr;
        EXPECT_EQ((som.*r.call)("VELMORA_NicProvider", &in, &out), 2) << r.name;
        std::unique_ptr<IWbemClassObject> owned(out);
        const qel_test::Request request = service.LastRequest();
        EXPECT_EQ(request.className, "VELMORA_NicProvider") << r.name;
        EXPECT_EQ(request.method, r.wire) << r.name;
        EXPECT_EQ(request.body, "string;AppKey;key;") << r.name;
        ASSERT_NE(out, nullptr);
        EXPECT_EQ(out->size(), 1u) << r.name;  // the reply's body is not decoded
        EXPECT_EQ(*out->GetAs<long>("ReturnValue"), 2) << r.name;

        const std::string sig = std::string("HRESULT CSomIf::") + r.name +
                                "(std::string, IWbemClassObject*, IWbemClassObject**)";
        const std::vector<std::string> texts = traces.Texts();
        ASSERT_FALSE(texts.empty());
        EXPECT_EQ(texts.front(),
                  "[ENTER] " + sig + (r.traceClass ? " VELMORA_NicProvider" : "")) << r.name;
        EXPECT_EQ(texts.back(), "[LEAVE] " + sig + ", rc=2") << r.name;
        EXPECT_TRUE(traces.Contains(
            "[ENTER] int CSomIf::TransUmMessage(std::string, std::string, IWbemClassObject*, "
            "IWbemClassObject**) VELMORA_NicProvider " +
            std::string(r.wire)));
    }
}

TEST_F(RelayTest, RelayedTransportFailureLeavesNoReturnValue) {
    service.Stop();
    IWbemClassObject* out = nullptr;
    EXPECT_EQ(som.ExecuteUpdateBackup("C", nullptr, &out), 0x80081001L);
    ASSERT_NE(out, nullptr);
    EXPECT_TRUE(out->empty());
    delete out;
}

TEST_F(RelayTest, TransUmMessageReturnsTheSignedCode) {
    service.Push(Action::Answer("", 0x80000002u));
    IWbemClassObject out;
    IWbemClassObject* outPtr = &out;
    const int code = static_cast<int>(0x80000002u);
    EXPECT_EQ(som.TransUmMessage("C", "M", nullptr, &outPtr), code);
    EXPECT_EQ(*out.GetAs<long>("ReturnValue"), code);
}

}  // namespace
