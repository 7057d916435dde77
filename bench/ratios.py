#!/usr/bin/env python3
"""Decoders against their floors and peers, from one run of qel_bench.

    qel_bench --benchmark_filter='<see docs/performance.md>' \
        --benchmark_format=json | python3 bench/ratios.py

CPU time of one benchmark run; every ratio compares figures of that run.
"""
import json
import sys

MIB4 = "4194304"

# decoder, its floor, RapidJSON DOM, nlohmann (same content as JSON)
PEERS = [("Generic_String2IWbem", "Floor_Generic", "Generic_RapidJsonDom", "Generic_Nlohmann"),
         ("Provider_RecordReader", "Floor_ProviderRecords", "Provider_RapidJsonDom",
          "Provider_Nlohmann")] + [
    ("List_RecordReader<%s>" % r, "Floor_ListRecords<%s>" % r, "List_RapidJsonDom<%s>" % r,
     "List_Nlohmann<%s>" % r)
    for r in ("CVELMORA_UpdatePlans", "CVELMORA_QelVersionInfo", "CVELMORA_VersionUpdateLog")]
# forward reader, the base decoder on the same bytes, its floor
FORWARD = [("Plans_TreeReader", "Plans_String2IWbem", "Floor_Plans"),
           ("Registration_TreeReader", "Registration_String2IWbem", "Floor_Registration"),
           ("Provider_TreeReader", "Provider_String2IWbem", None)]


def main():
    runs = json.load(sys.stdin)["benchmarks"]
    cpu = {}
    for run in runs:
        if run.get("run_type", "iteration") == "iteration":
            cpu[run["name"]] = run["cpu_time"] / 1000.0  # ms (microsecond unit)

    def at(name, size=MIB4):
        return cpu.get("%s/%s" % (name, size))

    print("| decoder (4 MiB) | ms | floor ms | x floor | x RapidJSON DOM | x nlohmann |")
    print("|---|---|---|---|---|---|")
    for ours, floor, rapid, nlo in PEERS:
        t = at(ours)
        if t is None:
            continue
        cells = [at(floor), at(rapid), at(nlo)]
        ratio = ["%.2f" % (t / cells[0]) if cells[0] else "",
                 "%.2f" % (cells[1] / t) if cells[1] else "",
                 "%.2f" % (cells[2] / t) if cells[2] else ""]
        print("| %s | %.1f | %s | %s |" % (ours, t, "%.1f" % cells[0] if cells[0] else "",
                                          " | ".join(ratio)))
    print()
    print("| forward reader | x base at 4 MiB | x floor | growth 1-2-4 MiB (base) |")
    print("|---|---|---|---|")
    for ours, base, floor in FORWARD:
        sizes = [at(ours, s) for s in ("1048576", "2097152", MIB4)]
        bases = [at(base, s) for s in ("1048576", "2097152", MIB4)]
        if None in sizes or None in bases:
            continue
        floored = at(floor) if floor else None
        print("| %s | %.2f | %s | %.2f, %.2f (%.2f, %.2f) |" % (
            ours, sizes[2] / bases[2], "%.2f" % (sizes[2] / floored) if floored else "",
            sizes[1] / sizes[0], sizes[2] / sizes[1], bases[1] / bases[0], bases[2] / bases[1]))
    traced, plain = at("Provider_TreeReaderTraced"), at("Provider_TreeReader")
    if traced and plain:
        print("\ntree reader, QEL_TRACE on: %.2f x off" % (traced / plain))


if __name__ == "__main__":
    main()
