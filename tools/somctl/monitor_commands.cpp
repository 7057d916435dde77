// The alive monitor's parameters, and a call of any method by name.
#include <memory>

#include "CResultCode.h"
#include "common/object_json.h"
#include "commands.h"

namespace somctl {
namespace {

int MonitorGet(Context& c, const std::string& name) {
    std::string value;
    unsigned type = 0;
    if (int rc = c.output.Result("monitor get", c.som.AliveMonitorGetParameter(name, value, type)))
        return rc;
    if (c.output.json())
        c.output.Json({{"ok", true}, {"name", name}, {"value", value}, {"type", type}});
    else
        c.output.out() << name << " = " << value << " (type " << type << ")\n";
    return kOk;
}

}  // namespace

int Monitor(Context& c, const Args& args) {
    const std::string verb = args.size() > 1 ? args[1] : "";
    if (verb == "get" && args.size() == 3)
        return MonitorGet(c, args[2]);
    HRESULT rc = 0;
    std::string done;
    if (verb == "set" && args.size() == 4) {
        // Both travel raw: a ';' would end the item early.
        if ((args[2] + args[3]).find(';') != std::string::npos)
            return c.output.Usage("monitor set: NAME and VALUE accept any bytes but ';'");
        rc = c.som.AliveMonitorSetParameter(args[2], args[3]);
        done = args[2] + " set";
    } else if (verb == "clear" && args.size() == 2) {
        rc = c.som.AliveMonitorClearParameters();
        done = "parameters cleared";
    } else if (verb == "reload" && args.size() == 2) {
        rc = c.som.AliveMonitorUpdateParameters();
        done = "parameters reloaded";
    } else {
        return c.output.Usage("usage: somctl monitor get NAME | set NAME VALUE | clear | reload");
    }
    if (int exit = c.output.Result("monitor " + verb, rc))
        return exit;
    c.output.Message(done);
    return kOk;
}

// A non-zero ReturnValue is the method's failure: exit 5, as for any error
// the service answers with.
int Exec(Context& c, const Args& args) {
    if (args.size() < 3)
        return c.output.Usage("usage: somctl exec CLASS METHOD [NAME=VALUE...]");
    IWbemClassObject in;
    for (std::size_t i = 3; i < args.size(); ++i) {
        const std::string::size_type eq = args[i].find('=');
        if (eq == std::string::npos)
            return c.output.Usage("'" + args[i] + "' is not NAME=VALUE");
        in.push(args[i].substr(0, eq), args[i].substr(eq + 1));
    }
    IWbemClassObject* out = nullptr;
    std::vector<char> className(args[1].begin(), args[1].end());
    className.push_back('\0');
    std::vector<char> method(args[2].begin(), args[2].end());
    method.push_back('\0');
    HRESULT rc = c.som.ExecMethod(className.data(), method.data(), 0, nullptr, &in, &out, nullptr);
    std::unique_ptr<IWbemClassObject> owned(out);
    if (int exit = c.output.Result("exec " + args[2], rc))
        return exit;
    // The output parameters, nested objects and object lists included.
    const nlohmann::json doc =
        out != nullptr ? nlohmann::json(qel::ObjectJson(*out)) : nlohmann::json::object();
    const auto returned = doc.find("ReturnValue");
    const bool failed = returned != doc.end() && returned->is_number() && *returned != 0;
    if (c.output.json()) {
        c.output.Json({{"ok", !failed}, {"output", doc}});
        return failed ? kServiceError : kOk;
    }
    c.output.Fields(doc);
    if (failed) {
        const uint32_t code = static_cast<uint32_t>(returned->get<long long>());
        return c.output.Fail("exec " + args[2], code,
                             "the method returned " + CResultCode::Describe(code), kServiceError);
    }
    return kOk;
}

}  // namespace somctl
