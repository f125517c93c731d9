"""The library on processors of each generation, as qemu's user-mode emulator models them.

usage: emulate.py selection PROBE
       emulate.py tests [--all] [--only VARIANT] [--jobs N] [--logs DIRECTORY] TESTS...

`selection` runs the probe on every model and compares what the processor executes, which features the library finds and which variant it
selects. `tests` runs GoogleTest programs on the barest processor of each variant: one with the sets that select it and nothing else. The
emulator refuses all instructions of the sets that a model lacks, so a variant that holds one dies of it."""
import argparse
import concurrent.futures
import fnmatch
import json
import os
import re
import shutil
import subprocess
import sys
from collections import Counter

VARIANTS = ["px", "w7", "s8", "p8", "g9", "h9"]

NEHALEM = "SSE3 SSSE3 SSE4.1 SSE4.2"
HASWELL = NEHALEM + " POPCNT MOVBE AVX F16C FMA AVX2 BMI1 BMI2 LZCNT TZCNT"

# Model: sets that it executes beyond SSE2, variant, features detected, features enabled, status of kuvInit().
MODELS = {
    "kvm64,-sse3": ("", "w7", 0x7, 0x7, 0),
    "kvm64": ("SSE3", "w7", 0xF, 0xF, 0),
    "Opteron_G1": ("SSE3", "w7", 0xF, 0xF, 20),
    "Conroe": ("SSE3 SSSE3", "s8", 0x1F, 0x1F, 0),
    "Conroe,+movbe": ("SSE3 SSSE3 MOVBE", "s8", 0x3F, 0x3F, 0),
    "Penryn": ("SSE3 SSSE3 SSE4.1", "s8", 0x5F, 0x5F, 0),
    "Nehalem,-popcnt": (NEHALEM, "p8", 0xDF, 0xDF, 0),
    "Denverton": (NEHALEM + " POPCNT MOVBE", "p8", 0x10002CFF, 0x10002CFF, 0),
    "SandyBridge,-popcnt": (NEHALEM + " AVX", "g9", 0xFDF, 0xFDF, 0),
    # The operating system does not save the wide registers.
    "SandyBridge,-xsave": (NEHALEM + " POPCNT", "p8", 0xDDF, 0xCDF, 49),
    "IvyBridge": (NEHALEM + " POPCNT AVX F16C", "g9", 0x6FDF, 0x6FDF, 0),
    "Opteron_G5": (NEHALEM + " POPCNT AVX F16C FMA LZCNT", "g9", 0x4FDF, 0x4FDF, 20),
    # One of the four sets that AVX2 stands for is missing.
    "Haswell,-fma": (HASWELL.replace(" FMA", ""), "g9", 0x6FFF, 0x6FFF, 0),
    "Haswell,-avx2": (HASWELL.replace(" AVX2", ""), "g9", 0x6FFF, 0x6FFF, 0),
    "Haswell,-bmi1": (HASWELL.replace(" BMI1", "").replace(" TZCNT", ""), "g9", 0x6FFF, 0x6FFF, 0),
    "Haswell,-bmi2": (HASWELL.replace(" BMI2", ""), "g9", 0x6FFF, 0x6FFF, 0),
    "Haswell,-popcnt,-movbe,-f16c,-abm": (NEHALEM + " AVX FMA AVX2 BMI1 BMI2 TZCNT", "h9", 0xAFDF, 0xAFDF, 0),
    "Haswell": (HASWELL, "h9", 0xEFFF, 0xEFFF, 0),
    "EPYC": (HASWELL, "h9", 0x1EFFF, 0x1EFFF, 20),
}
BAREST = ["kvm64,-sse3", "Conroe", "Nehalem,-popcnt", "SandyBridge,-popcnt", "Haswell,-popcnt,-movbe,-f16c,-abm"]

# What the processor is asked and how calls find their variant; all variants against px; and, of the one selected, the statuses and those
# tests of results that are not too long for an emulator.
BRIEF = ["Selection.*", "Features.*", "Cache.*", "Version.*", "Memory.*", "*Dispatch.*", "LazyStub.*", "Stub.*", "Thread*",
         "Agreement.*"]
BRIEF_OF_SELECTED = [
    "Simd.*", "Statuses.*", "*.EveryWidth", "*.EverySmallSize", "*.EveryOrder", "*.EveryCurveAndLayout", "*.OverlapIsWhatTheCornersTell",
    "DemosaicRegions.AtRandom", "DFT.EveryPath", "DFT.SimpleSignals", "DFTInit.*", "FilterBorderRegions.ACorrelation",
    "Dct8x8.ArithmeticIsThatOfTheReference", "Zigzag8x8.*", "ResizePlan.TablesOfSmallSizes", "Resize.SmallSizes", "HistogramInit.Records",
    "Histogram.AroundLevels", "LabelMarkers.Shapes", "Mirror.EveryHeight", "ReduceBits.TwoLevelsSplitAtTheMiddle",
    "ScaledArithmetic.ResultsAtTheLimits", "ToneMap.StepsSearchedAndFromTheTable"]
# qemu 7.2 reads 16 bytes where a fused product has a single sample in memory, beyond the ends of images, and its gathers ignore indices
# that are in the fourth register.
EMULATORS_FAULTS = {
    "h9": ["Agreement.kuviFilterBorder_32f_C1R/h9", "FilterBorder.EveryWidth/h9", "ToneMap.StepsSearchedAndFromTheTable/h9"]}
LONG = ["-Statuses.kuviLUT_Init_16u/*", "Histogram.EveryWidth/*", "Mirror.EveryWidth/*", "ReduceBits.EveryWidth/*",
        "ScaledArithmetic.EveryWidth/*", "ToneMap.EveryWidth/*"]


def run(model, program, *arguments, environment=None, log=None):
    """What the program printed, and how it ended."""
    # Models have features that no emulator has; qemu warns of each.
    result = subprocess.run(["qemu-x86_64", "-cpu", model, program, *arguments], env={**os.environ, **(environment or {})},
                            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, errors="replace")
    if log:
        with open(log, "w") as file:
            file.write(result.stdout)
    return result.stdout, result.returncode


def selection(arguments):
    complaints = []
    for model, (sets, variant, detected, enabled, status) in MODELS.items():
        text, code = run(model, arguments.probe)
        wanted = [f"variant {variant}", f"features 0 {detected:#x}", "sets " + sets, f"enabled {status} {enabled:#x}"]
        got = text.splitlines()
        if code != 0 or [line.split() for line in got] != [line.split() for line in wanted]:
            complaints.append(f"{model}: got {got} (exit code {code}), wanted {wanted}")
        print(f"{model}: {variant}")
    print(*complaints, sep="\n")
    return not complaints


def names(program):
    """Of all tests of a program."""
    listed = subprocess.run([program, "--gtest_list_tests"], stdout=subprocess.PIPE, text=True, check=True).stdout
    suite, found = "", []
    for line in listed.splitlines():
        word = line.split("#")[0].rstrip()
        if word.startswith("  "):
            found.append(suite + word.strip())
        elif word.endswith("."):
            suite = word
    return found


def idle_patterns(arguments):
    """The patterns that no test of any of the programs fits, as when it has been renamed."""
    patterns = [each.lstrip("-") for each in BRIEF + LONG + sum(EMULATORS_FAULTS.values(), [])]
    patterns += [each + "/*" for each in BRIEF_OF_SELECTED]
    tests = [name for program in arguments.programs for name in names(program)]
    return [each for each in patterns if not fnmatch.filter(tests, each)]


def shard(arguments, model, program, index):
    """Runs one part of a program's tests. Gives their results and what went wrong besides."""
    variant = MODELS[model][1]
    name = f"{os.path.basename(program)}-{variant}-{index}"
    results, log = (os.path.join(arguments.logs, name + suffix) for suffix in (".json", ".log"))
    environment = {"GTEST_TOTAL_SHARDS": str(arguments.jobs), "GTEST_SHARD_INDEX": str(index), "GTEST_OUTPUT": "json:" + results}
    if not arguments.all:
        environment["KUVCV_TEST_ROUNDS"] = "0.02"
        environment["GTEST_FILTER"] = ":".join(BRIEF + [each + "/" + variant for each in BRIEF_OF_SELECTED] + LONG
                                              + EMULATORS_FAULTS.get(variant, []))
    if os.path.exists(results):
        os.remove(results)
    text, code = run(model, program, environment=environment, log=log)
    complaints = []
    if not os.path.exists(results):
        complaints.append(f"{model}: ended with code {code}, see {log}")
        return [], complaints
    stronger = VARIANTS[VARIANTS.index(variant) + 1:]
    for each in sorted(set(re.findall(r"this processor cannot run (\w\w)", text))):
        if each not in stronger:
            complaints.append(f"{model}: does not run {each}, see {log}")
    with open(results) as file:
        tests = [{**test, "suite": suite["name"]} for suite in json.load(file)["testsuites"] for test in suite["testsuite"]]
    complaints += [f"{model}: {test['suite']}.{test['name']} failed, see {log}" for test in tests if "failures" in test]
    if code != 0 and not complaints:
        complaints.append(f"{model}: ended with code {code}, see {log}")
    return tests, complaints


def run_tests(arguments):
    os.makedirs(arguments.logs, exist_ok=True)
    models = [each for each in BAREST if not arguments.only or MODELS[each][1] == arguments.only]
    idle = [] if arguments.all else idle_patterns(arguments)
    for each in idle:
        print(f"no test fits {each}")
    failed = not models or bool(idle)
    with concurrent.futures.ThreadPoolExecutor(arguments.jobs) as pool:
        shards = {model: [pool.submit(shard, arguments, model, program, index)
                          for program in arguments.programs for index in range(arguments.jobs)] for model in models}
        for model, futures in shards.items():
            passed, skipped, complaints = Counter(), 0, []
            for future in futures:
                tests, found = future.result()
                complaints += found
                for test in tests:
                    if test["result"] == "SKIPPED":
                        skipped += 1
                    elif "failures" not in test:
                        code = test["name"].rpartition("/")[2]
                        passed[code if code in VARIANTS else "of no variant"] += 1
            variant = MODELS[model][1]
            complaints += [f"{model}: no test of {code}" for code in VARIANTS[:VARIANTS.index(variant) + 1] if not passed[code]]
            counts = ", ".join(f"{passed[key]} {key}" for key in VARIANTS + ["of no variant"])
            left_out = "".join(f", left out: {each}" for each in EMULATORS_FAULTS.get(variant, []) if not arguments.all)
            print(f"{model}: {passed.total()} tests passed ({counts}), {skipped} skipped{left_out}", *complaints, sep="\n", flush=True)
            failed = failed or bool(complaints)
    return not failed


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    modes = parser.add_subparsers(required=True)
    mode = modes.add_parser("selection")
    mode.add_argument("probe")
    mode.set_defaults(action=selection)
    mode = modes.add_parser("tests")
    mode.add_argument("--all", action="store_true", help="all tests in full, which takes long")
    mode.add_argument("--only", choices=VARIANTS[1:], help="the processor of this variant alone")
    mode.add_argument("--jobs", type=int, default=os.cpu_count())
    mode.add_argument("--logs", default=".")
    mode.add_argument("programs", nargs="+")
    mode.set_defaults(action=run_tests)
    arguments = parser.parse_args()
    if shutil.which("qemu-x86_64") is None:
        print("qemu-x86_64 is missing: Debian's package is qemu-user")
        sys.exit(77)
    sys.exit(0 if arguments.action(arguments) else 1)


if __name__ == "__main__":
    main()
