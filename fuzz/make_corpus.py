#!/usr/bin/env python3
"""Builds the seed corpora of the fuzz targets from realistic replies of a
running somd (QEL_SYSROOT names its sandbox) and from the scenario's files.
Usage: QEL_SYSROOT=DIR fuzz/make_corpus.py fuzz/corpus"""
import os, socket, sys

root = os.environ["QEL_SYSROOT"]
out = sys.argv[1]

def request(cls, method, body=b""):
    head = b"%08d" % (33 + len(cls) + len(method)) + b"cafefeed" + cls + b"/" + method
    return head + b"00000000" + b"%08d" % len(body) + body

def exchange(cls, method, body=b""):
    s = socket.socket(socket.AF_UNIX)
    s.connect(root + "/run/som.sock")
    s.sendall(request(cls, method, body))
    reply = b""
    while True:
        chunk = s.recv(65536)
        if not chunk:
            break
        reply += chunk
    s.close()
    return reply

def body(reply, cls, method):
    return reply[33 + len(cls) + len(method):]

def save(target, name, data):
    os.makedirs(os.path.join(out, target), exist_ok=True)
    with open(os.path.join(out, target, name), "wb") as f:
        f.write(data)

calls = {
    "providers_nic": (b"VELMORA_NicProvider", b"GetProviderManageInfo", b""),
    "providers_gpu": (b"VELMORA_GpuProvider", b"GetProviderManageInfo", b""),
    "providers_tool": (b"VELMORA_FirmwareTool", b"GetProviderManageInfo", b""),
    "download_setting": (b"VELMORA_UpdateManager", b"GetAutoDownloadSetting", b""),
    "update_setting": (b"VELMORA_UpdateManager", b"GetAutoUpdateSetting", b""),
    "plans": (b"VELMORA_UpdateManager", b"GetUpdatePlans", b""),
    "rollback_plans": (b"VELMORA_UpdateManager", b"GetUpdatePlans", b"bool;Rollback;1;"),
    "conformity": (b"VELMORA_NicProvider", b"CheckUpdateModuleConformity", b""),
    "versions": (b"VELMORA_QelVersion", b"CollectQelVersion", b""),
    "version_log": (b"VELMORA_LogManager", b"CollectVersionUpLog", b""),
    "download_log": (b"VELMORA_LogManager", b"CollectDownloadLog", b"string;AppKey;k;"),
    "alive": (b"VELMORA_ToolServiceWD", b"AliveMonitorGetParameter", b"string;Name;Interval;"),
}
bodies = {}
for name, (cls, method, req) in calls.items():
    reply = exchange(cls, method, req)
    bodies[name] = body(reply, cls, method)
    save("reply", name, reply)
    save("somd_request", name, request(cls, method, req))

# Setters, keys and values that are not UTF-8, and requests somd must refuse.
update_manager = b"VELMORA_UpdateManager"
setters = {
    "set_download_setting": (update_manager, b"SetAutoDownloadSetting", bodies["download_setting"]),
    "set_download_latin1": (update_manager, b"SetAutoDownloadSetting",
                            bodies["download_setting"].replace(b"ProxyUser;", b"ProxyUser;\xe9", 1)),
    "set_update_setting": (update_manager, b"SetAutoUpdateSetting", bodies["update_setting"]),
    "set_update_garbage": (update_manager, b"SetAutoUpdateSetting", b"garbage;;;"),
    "set_update_empty": (update_manager, b"SetAutoUpdateSetting", b""),
    "set_priority": (b"VELMORA_NicProvider", b"SetUpdatePriority",
                     b"class;Velmora_PriorityUpdateParam;;string;AppKey;\xff;long;UpdatePriority;7;"
                     b"string;VendorName;V;string;DeviceID;D;string;ModuleKind;M;"),
    "authority_latin1": (update_manager, b"GetOperatingAuthority", b"string;AppKey;\xff\xfe;"),
    "alive_set_latin1": (b"VELMORA_ToolServiceWD", b"AliveMonitorSetParameter",
                         b"string;Name;\xff;string;Value;caf\xe9;"),
    "alive_clear": (b"VELMORA_ToolServiceWD", b"AliveMonitorClearParameter", b""),
    "unserved_class": (b"Bogus", b"GetOperatingAuthority", b"string;AppKey;k;"),
}
for name, (cls, method, req) in setters.items():
    save("somd_request", name, request(cls, method, req))

for name in ("providers_nic", "providers_gpu", "providers_tool"):
    save("provider_records", name, bodies[name])
    save("provider_tree", name, bodies[name])
for name in ("download_setting", "update_setting"):
    save("schedule", name, bodies[name])
for name in ("plans", "rollback_plans"):
    save("plans", name, bodies[name])
save("plans", "registration", b"string;AppKey;K;class[];UpdateModuleRegistInfo;;string;VendorName;V;"
     b"string;UniqueName;U;string;ModuleKind;M;string;VendorVersion;1.0;string;ModulePath;/p;")
save("conformity", "list", bodies["conformity"])
save("conformity", "input", b"string;AppKey;k;string;CheckUpdateModuleConformityInput;;" +
     bodies["conformity"][len(b"class[];UpdateModuleConformityList;;"):])
for name in ("plans", "versions", "version_log"):
    save("version_lists", name, bodies[name])
for name in ("download_log", "alive", "plans", "download_setting"):
    save("codec", name, bodies[name])
save("codec", "nested", b"string;A;x;class;N;;int;I;3;string[];L;a!#b%!@c;ulong;U;-1;bool;B;true;")

qel = root + "/opt/velmora/qel"
save("mof", "scenario", open(qel + "/etc/qelvelmora.mof", "rb").read())
save("ini", "provider", open(qel + "/provider/nic.ini", "rb").read())
save("ini", "status", open(qel + "/ProcessStatus.ini", "rb").read())
save("inventory", "devices", open(qel + "/etc/devices.tmp", "rb").read())
lines = open("/usr/share/hwdata/pci.ids", "rb").read().split(b"\n")
start = lines.index(next(l for l in lines if l.startswith(b"8086  ")))
save("pci_ids", "intel_excerpt", b"\n".join(lines[:40] + lines[start:start + 120]))
