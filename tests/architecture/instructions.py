"""No instruction beyond a variant's set, in any of its object files.

usage: instructions.py OBJDUMP VARIANT OBJECT...   (core counts as px)

Every instruction must be in a table: what is in none belongs to no variant."""
import os
import re
import sys

from binaries import finish, output

# What each variant may use, the baseline of the platform being SSE2.
SETS = {
    "px": "SSE2",
    "w7": "SSE2",
    "s8": "SSE2 SSE3 SSSE3",
    "p8": "SSE2 SSE3 SSSE3 SSE4.1 SSE4.2",
    "g9": "SSE2 SSE3 SSSE3 SSE4.1 SSE4.2 AVX",
    "h9": "SSE2 SSE3 SSSE3 SSE4.1 SSE4.2 AVX AVX2 FMA BMI1 BMI2",
}
SETS["core"] = SETS["px"] + " XSAVE"  # xgetbv, once CPUID has told of it

# Instructions on XMM registers by the set that brought them.
XMM = {
    "SSE2": r"""
        mov(a|u)p[sd] | movdq[au] | mov(l|h|lh|hl)p[sd] | movs[sd] | mov[dq] | movnt(ps|pd|dq) | movmskp[sd] | pmovmskb | maskmovdqu
        (add|sub|mul|div|min|max|sqrt)[ps][sd] | (and|andn|or|xor)p[sd] | (rcp|rsqrt)[ps]s
        cmp(eq|lt|le|unord|neq|nlt|nle|ord)?[ps][sd] | u?comis[sd] | shufp[sd] | unpck[lh]p[sd]
        cvt(si2s[sd]l?q? | t?s[sd]2si | ps2pd | pd2ps | ss2sd | sd2ss | dq2p[sd] | t?p[sd]2dq)
        padd(u?s)?[bw] | padd[dq] | psub(u?s)?[bw] | psub[dq] | pmul(lw|hw|huw|udq) | pmaddwd | psadbw | pavg[bw]
        p(min|max)(ub|sw) | pcmp(eq|gt)[bwd] | p(and|andn|or|xor) | ps(ll|rl)(w|d|q|dq) | psra[wd]
        packss(wb|dw) | packuswb | punpck[lh](bw|wd|dq|qdq) | pshuf(d|lw|hw) | pextrw | pinsrw""",
    "SSE3": r"addsubp[sd] | haddp[sd] | hsubp[sd] | lddqu | mov(ddup|shdup|sldup)",
    "SSSE3": r"pabs[bwd] | palignr | phadd(w|d|sw) | phsub(w|d|sw) | pmaddubsw | pmulhrsw | pshufb | psign[bwd]",
    "SSE4.1": r"""
        blend(v?)p[sd] | pblend(vb|w) | dpp[sd] | extractps | insertps | movntdqa | mpsadbw | packusdw | pcmpeqq | pextr[bdq]
        pinsr[bdq] | phminposuw | p(min|max)(sb|sd|ud|uw) | pmov[sz]x(bw|bd|bq|wd|wq|dq) | pmuldq | pmulld | ptest | round[ps][sd]""",
    "SSE4.2": r"pcmpgtq | pcmp[ei]str[im] | crc32[bwlq]?",
}
# Instructions with a v in front that have no form of their own above, by set.
VEX = {
    "AVX": r"""
        vbroadcast(ss|sd|f128) | vextractf128 | vinsertf128 | vmaskmovp[sd] | vpermilp[sd] | vperm2f128 | vtestp[sd] | vzero(upper|all)
        vcmp\w+[ps][sd] | v(ld|st)mxcsr""",
    "AVX2": r"""
        vpbroadcast[bwdq] | vbroadcasti128 | vextracti128 | vinserti128 | vperm2i128 | vperm[dq] | vpermp[sd] | vpblendd | vpmaskmov[dq]
        vps[lr]lv[dq] | vpsravd | v(p?)gather[dq](ps|pd|d|q)""",
    "FMA": r"vfn?m(add|sub|addsub|subadd)(132|213|231)[ps][sd]",
}
# On 256 bits these are AVX; every other instruction of integers is AVX2 there.
AVX_ON_YMM = r"movdq[au] | movntdq | lddqu | ptest | cvt.*"
# Instructions without vector registers: those of every x86-64 processor, and those of extensions. (tzcnt is among the former: older
# processors take it for bsf, and compilers use it where that gives the same.)
BASELINE = r"""
    (adc|add|and|bsf|bsr|bswap|bt[crs]?|call|cmp|cmpxchg|dec|div|idiv|imul|inc|lea|leave|mov|movabs|mul|neg|nop|not|or)[bwlq]?
    (pop|popf|push|pushf|rc[lr]|ret|ro[lr]|sa[lr]|sbb|sh[lr]d?|sub|test|tzcnt|xadd|xchg|xor|cmps|lods|movs|scas|stos)[bwlq]?
    mov[sz](bw|bl|bq|wl|wq|lq) | cmov\w+ | j\w+ | set(n?[abceglopsz]|n?[abgl]e|n?p[eo]) | cbtw | cwt[ld] | clt[dq] | cqto | c[lm]c | stc
    endbr64 | ud2 | cpuid | pause | fwait | prefetch(nta|t[012]) | [lms]fence | movnti[lq]? | (ld|st)mxcsr | cvtt?s[sd]2si[lq]?"""
GENERAL = {
    "BMI1": r"andn | bextr | blsi | blsmsk | blsr",
    "BMI2": r"bzhi | mulx | pdep | pext | rorx | sarx | shlx | shrx",
    "POPCNT": r"popcnt[wlq]?",
    "LZCNT": r"lzcnt[wlq]?",
    "MOVBE": r"movbe[wlq]?",
    "XSAVE": r"xgetbv",
    "SSE3": r"fisttp(s|l|ll)?",
    "SSE4.2": r"crc32[bwlq]?",
}
# px is the statement of the arithmetic in scalar code, so it computes nothing on several samples at once.
PACKED_ARITHMETIC = r"""
    p(add|sub|mul|madd|sad|avg|min|max|cmp|ack)\w+ | ps(ll|rl|ra)[wdq] | (add|sub|mul|div|min|max|sqrt)p[sd] | cmp\w*p[sd]
    cvt(ps2pd|pd2ps|dq2p[sd]|t?p[sd]2dq) | p?movmsk(b|p[sd])"""
# A line of the disassembly: prefixes, mnemonic, operands.
INSTRUCTION = re.compile(r"(?:(?:rep|repz|repnz|lock|notrack|data16|bnd|cs|ds|es|fs|gs|rex\S*) )*(\w+)\s*(.*)")


def pattern(text):
    """A table's entry: alternatives apart by bars or line breaks, blanks for the reader's sake."""
    return re.compile("|".join("(?:" + re.sub(r"\s", "", line) + ")" for line in text.strip().splitlines()))


XMM, VEX, GENERAL = ({name: pattern(text) for name, text in table.items()} for table in (XMM, VEX, GENERAL))
AVX_ON_YMM, BASELINE, PACKED_ARITHMETIC = (pattern(each) for each in (AVX_ON_YMM, BASELINE, PACKED_ARITHMETIC))


def find(table, mnemonic):
    return next((name for name, regex in table.items() if regex.fullmatch(mnemonic)), None)


def set_of(mnemonic, operands):
    """The set that an instruction belongs to; None for what every processor has without vector registers."""
    if re.search(r"%zmm|%k[0-7]|%[xy]mm(1[6-9]|2\d|3[01])|\{", operands):
        return "AVX-512"
    if re.search(r"%mm[0-7]", operands) or mnemonic == "emms":
        return "MMX"
    if mnemonic.startswith("v"):
        special = find(VEX, mnemonic)
        if mnemonic in ("vbroadcastss", "vbroadcastsd") and operands.startswith("%xmm"):
            return "AVX2"
        if special:
            return special
        legacy = mnemonic[1:]
        known = find(XMM, legacy)
        if known is None:
            return f"an unknown set ({mnemonic} {operands})"
        integer = legacy.startswith("p") or legacy.startswith("mov") and "dq" in legacy or legacy == "mpsadbw"
        return "AVX2" if "%ymm" in operands and integer and not AVX_ON_YMM.fullmatch(legacy) else "AVX"
    if "%xmm" in operands:
        return find(XMM, mnemonic) or f"an unknown set ({mnemonic} {operands})"
    if BASELINE.fullmatch(mnemonic):
        return None
    return find(GENERAL, mnemonic) or f"an unknown set ({mnemonic} {operands})"


def trouble(code, text):
    """What is wrong with an instruction in a variant's unit, or None."""
    instruction = INSTRUCTION.fullmatch(text)
    if instruction is None:
        return "cannot be read"
    mnemonic, operands = instruction[1], instruction[2].split("#")[0]
    found = set_of(mnemonic, operands)
    if found is not None and found not in SETS[code].split():
        return found
    if code == "px" and PACKED_ARITHMETIC.fullmatch(mnemonic):
        return "packed"
    if code in ("g9", "h9") and "%xmm" in operands and not mnemonic.startswith("v"):
        return "not in AVX's encoding, after which wide registers are slow"
    return None


def check(objdump, code, objects):
    for path in objects:
        function, count = "?", 0
        for line in output(objdump, "-d", "--no-show-raw-insn", path).splitlines():
            label = re.fullmatch(r"[0-9a-f]+ <(.*)>:", line)
            if label:
                function = label[1]
            instruction = re.match(r" *[0-9a-f]+:\t(.*)", line)
            if not instruction:
                continue
            count += 1
            found = trouble(code, instruction[1].strip())
            if found:
                yield f"{os.path.basename(path)}, {function}: {found}: {line.strip()}"
        if count == 0:
            yield f"{os.path.basename(path)}: no instructions found"


if __name__ == "__main__":
    finish(list(check(sys.argv[1], sys.argv[2], sys.argv[3:])))
