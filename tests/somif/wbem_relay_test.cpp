// The WBEM relay: ExecMethod, TransUmMessage and the ten relayed methods.
#include <gtest/gtest.h>

#include <memory>

#include "CSomIf.h"
#include "support/fake_som_service.h"
#include "support/trace_recorder.h"

namespace {

using qel_test::Action;
using qel_test::FakeSomService;

const std::string kExecSig =
    "HRESULT CSomIf::ExecMethod(OLECHAR*, OLECHAR*, long int, IWbemContext*, IWbemClassObject*, "
    "IWbemClassObject**, IWbemCallResult**)";

class RelayTest : public ::testing::Test {
  protected:
    qel_test::TempSysroot root;
    FakeSomService service{root, 1};
    CSomIf som{"relay"};

    HRESULT Exec(const char* cls, const char* method, IWbemClassObject* in,
                 IWbemClassObject** out) {
        return som.ExecMethod(const_cast<char*>(cls), const_cast<char*>(method), 0, nullptr, in,
                              out, nullptr);
    }
};

TEST_F(RelayTest, ExecMethodSendsInParamsAndDecodesTheReplyOnTopOfReturnValue) {
    service.Push(Action::Answer("long;ReturnValue;3;string;Message;done;"));
    service.Push(Action::Answer("long;ReturnValue;9;", 0x80040001u));
    IWbemClassObject in;
    in.push("AppKey", std::string("k;1"));
    in.push("Force", true);
    IWbemClassObject* out = nullptr;
    EXPECT_EQ(Exec("VELMORA_UpdateManager", "ExecuteUpdate", &in, &out), 0);
    std::unique_ptr<IWbemClassObject> owned(out);
    EXPECT_EQ(service.LastRequest().bytes,
              "00000067cafefeedVELMORA_UpdateManager/ExecuteUpdate0000000000000036"
              "string;AppKey;k%!@1;bool;Force;true;");
    EXPECT_EQ(*out->GetAs<long>("ReturnValue"), 3);
    EXPECT_EQ(*out->GetAs<std::string>("Message"), "done");
    // A service code (not of the transport family) replaces ReturnValue, and
    // the body's own ReturnValue item is appended on top of it.
    owned.reset();
    out = nullptr;
    EXPECT_EQ(Exec("C", "M", nullptr, &out), 0);
    owned.reset(out);
    EXPECT_EQ(out->size(), 2u);
    EXPECT_EQ(service.LastRequest().bytes, "00000035cafefeedC/M0000000000000000");
    EXPECT_EQ(*out->GetAs<long>("ReturnValue"), 9);
    EXPECT_EQ(boost::any_cast<long>(out->begin()->second), static_cast<int>(0x80040001u));
}

TEST_F(RelayTest, ExecMethodFailures) {
    qel_test::TraceRecorder traces;
    IWbemClassObject* out = nullptr;
    EXPECT_EQ(Exec(nullptr, "M", nullptr, &out), -1);
    EXPECT_EQ(Exec("C", nullptr, nullptr, &out), -1);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(traces.Texts(),
              (std::vector<std::string>{"[ENTER] " + kExecSig, "[ENTER] " + kExecSig}));
    service.Push(Action::Answer("", 0x80080005u));  // the transport family: returned
    EXPECT_EQ(Exec("C", "M", nullptr, &out), 0x80080005L);
    ASSERT_NE(out, nullptr);
    EXPECT_TRUE(out->empty());
    delete out;
    out = nullptr;
    service.Stop();
    EXPECT_EQ(Exec("C", "M", nullptr, &out), 0x80081001L);
    ASSERT_NE(out, nullptr);  // created before the exchange
    EXPECT_TRUE(out->empty());
    out->Release();
    EXPECT_TRUE(traces.Contains("[LEAVE] " + kExecSig + ", rc=-2146955263"));
}

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
        qel_test::TraceRecorder traces;
        service.Push(Action::Answer("long;ReturnValue;4;string;Extra;x;", 0x00000002u));
        IWbemClassObject in;
        in.push("AppKey", std::string("key"));
        IWbemClassObject* out = nullptr;
        EXPECT_EQ((som.*r.call)("VELMORA_NicProvider", &in, &out), 2) << r.name;
        std::unique_ptr<IWbemClassObject> owned(out);
        EXPECT_EQ(service.LastRequest().className + "/" + service.LastRequest().method + " " +
                      service.LastRequest().body,
                  std::string("VELMORA_NicProvider/") + r.wire + " string;AppKey;key;");
        EXPECT_EQ(out->size(), 1u) << r.name;  // the reply's body is not decoded
        EXPECT_EQ(*out->GetAs<long>("ReturnValue"), 2) << r.name;
        const std::string sig = std::string("HRESULT CSomIf::") + r.name +
                                "(std::string, IWbemClassObject*, IWbemClassObject**)";
        EXPECT_EQ(traces.Texts().front(),
                  "[ENTER] " + sig + (r.traceClass ? " VELMORA_NicProvider" : ""));
        EXPECT_EQ(traces.Texts().back(), "[LEAVE] " + sig + ", rc=2");
        EXPECT_TRUE(
            traces.Contains("[ENTER] int CSomIf::TransUmMessage(std::string, std::string, "
                            "IWbemClassObject*, IWbemClassObject**) VELMORA_NicProvider " +
                            std::string(r.wire)));
    }
}

TEST_F(RelayTest, TransUmMessageCodes) {
    service.Push(Action::Answer("", 0x80000002u));
    IWbemClassObject out;
    IWbemClassObject* outPtr = &out;
    const int code = static_cast<int>(0x80000002u);
    EXPECT_EQ(som.TransUmMessage("C", "M", nullptr, &outPtr), code);  // stored and returned
    EXPECT_EQ(*out.GetAs<long>("ReturnValue"), code);
    service.Stop();
    IWbemClassObject* fresh = nullptr;
    EXPECT_EQ(som.ExecuteUpdateBackup("C", nullptr, &fresh), 0x80081001L);
    EXPECT_TRUE(fresh->empty());  // no ReturnValue for the transport family
    delete fresh;
}

}  // namespace
