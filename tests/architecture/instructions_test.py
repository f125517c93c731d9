"""The table of instructions.py against instructions whose set is known, so that the scan can be trusted to find something."""
import sys

from instructions import set_of, trouble

KNOWN = [
    ("addss", "%xmm1,%xmm0", "SSE2"), ("movdqu", "(%rsi),%xmm0", "SSE2"), ("cvtsi2sd", "%eax,%xmm0", "SSE2"),
    ("pmovmskb", "%xmm0,%eax", "SSE2"),
    ("pshufb", "%xmm1,%xmm0", "SSSE3"), ("palignr", "$0x4,%xmm1,%xmm0", "SSSE3"), ("haddps", "%xmm1,%xmm0", "SSE3"),
    ("pmulld", "%xmm1,%xmm0", "SSE4.1"), ("pminud", "%xmm1,%xmm0", "SSE4.1"), ("pmovzxbw", "(%rsi),%xmm0", "SSE4.1"),
    ("pcmpgtq", "%xmm1,%xmm0", "SSE4.2"), ("crc32l", "%eax,%ecx", "SSE4.2"), ("popcnt", "%eax,%ecx", "POPCNT"),
    ("vaddps", "%ymm1,%ymm0,%ymm2", "AVX"), ("vpaddd", "%xmm1,%xmm0,%xmm2", "AVX"), ("vmovdqu", "%ymm0,(%rdi)", "AVX"),
    ("vzeroupper", "", "AVX"), ("vldmxcsr", "0x3c(%rsp)", "AVX"), ("vbroadcastss", "(%rsi),%ymm0", "AVX"),
    ("vcmpltps", "%ymm1,%ymm0,%ymm2", "AVX"),
    ("vbroadcastss", "%xmm1,%ymm0", "AVX2"), ("vpaddd", "%ymm1,%ymm0,%ymm2", "AVX2"), ("vpermq", "$0xd8,%ymm0,%ymm0", "AVX2"),
    ("vpackuswb", "%ymm1,%ymm0,%ymm0", "AVX2"), ("vpbroadcastw", "%xmm0,%xmm0", "AVX2"), ("vpsllvd", "%xmm0,%xmm0,%xmm0", "AVX2"),
    ("vextracti128", "$1,%ymm0,%xmm0", "AVX2"), ("vpmovzxbw", "%xmm0,%ymm0", "AVX2"), ("vfmadd213ps", "%ymm1,%ymm0,%ymm2", "FMA"),
    ("andn", "%eax,%ebx,%ecx", "BMI1"), ("shlx", "%eax,%ebx,%ecx", "BMI2"), ("lzcnt", "%eax,%ecx", "LZCNT"),
    ("movbe", "(%rsi),%eax", "MOVBE"), ("vpaddd", "%zmm1,%zmm0,%zmm2", "AVX-512"), ("vmovdqu32", "%xmm16,%xmm0", "AVX-512"),
    ("vpaddd", "%ymm1,%ymm0,%ymm2{%k1}", "AVX-512"), ("movq", "%mm0,%rax", "MMX"), ("mov", "%rax,%rcx", None), ("tzcnt", "%eax,%ecx", None),
    ("paddb", "%mm0,%mm1", "MMX"), ("xgetbv", "", "XSAVE"), ("fisttpl", "(%rdi)", "SSE3"), ("cvttsd2si", "(%rdi),%eax", None),
    ("movslq", "%eax,%rcx", None), ("cmovbe", "%eax,%ecx", None), ("setnp", "%al", None), ("stos", "%al,%es:(%rdi)", None),
]
# What is in no table: no variant may hold it.
UNKNOWN = [
    ("vcvtph2ps", "%xmm0,%xmm1"), ("vpclmulqdq", "$0x0,%xmm0,%xmm1,%xmm1"), ("aesenc", "%xmm0,%xmm1"),
    ("sha1rnds4", "$0x0,%xmm0,%xmm1"), ("vgf2p8mulb", "%xmm0,%xmm1,%xmm1"), ("vpdpbusd", "%ymm0,%ymm1,%ymm1"),
    ("vfmaddps", "%xmm0,%xmm1,%xmm1,%xmm1"), ("extrq", "%xmm0,%xmm1"), ("prefetchw", "(%rdi)"), ("rdrand", "%eax"),
    ("adcx", "%eax,%ecx"), ("cmpxchg16b", "(%rdi)"), ("lahf", ""), ("clflushopt", "(%rdi)"), ("xsave", "(%rdi)"), ("fldl", "(%rdi)"),
]
# Lines as they stand in a disassembly: what is wrong with them, or None.
LINES = [
    ("w7", "rep stos %rax,%es:(%rdi)", None), ("w7", "cs nopw 0x0(%rax,%rax,1)", None), ("w7", "notrack jmp *%rax", None),
    ("w7", "paddb  %xmm1,%xmm0", None), ("w7", "pshufb 0x0(%rip),%xmm0        # 8 <f+0x8>", "SSSE3"),
    ("s8", "pshufb %xmm1,%xmm0", None),
    ("w7", "vpaddb %xmm1,%xmm0,%xmm0", "AVX"), ("g9", "vpaddb %ymm1,%ymm0,%ymm0", "AVX2"), ("h9", "popcnt %eax,%ecx", "POPCNT"),
    ("px", "paddb  %xmm1,%xmm0", "packed"), ("px", "addss  %xmm1,%xmm0", None), ("core", "paddb  %xmm1,%xmm0", None),
    ("core", "xgetbv", None), ("px", "xgetbv", "XSAVE"), ("p8", "(bad)", "cannot be read"),
    ("h9", "{vex} vpdpbusd %ymm0,%ymm1,%ymm1", "cannot be read"),
    ("h9", "addss  %xmm1,%xmm0", "not in AVX's encoding, after which wide registers are slow"), ("p8", "addss  %xmm1,%xmm0", None),
]
wrong = [(mnemonic, operands, set_of(mnemonic, operands), wanted) for mnemonic, operands, wanted in KNOWN
         if set_of(mnemonic, operands) != wanted]
wrong += [each for each in UNKNOWN if "unknown" not in (set_of(*each) or "")]
wrong += [(*each, trouble(*each[:2])) for each in LINES if trouble(*each[:2]) != each[2]]
print(*wrong, sep="\n")
sys.exit(1 if wrong else 0)
