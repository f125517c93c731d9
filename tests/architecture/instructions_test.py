"""The table of instructions.py against instructions whose set is known, so that the scan can be trusted to find something."""
import sys

from instructions import set_of

KNOWN = [
    ("addss", "%xmm1,%xmm0", "SSE2"), ("movdqu", "(%rsi),%xmm0", "SSE2"), ("cvtsi2sd", "%eax,%xmm0", "SSE2"), ("pmovmskb", "%xmm0,%eax", "SSE2"),
    ("pshufb", "%xmm1,%xmm0", "SSSE3"), ("palignr", "$0x4,%xmm1,%xmm0", "SSSE3"), ("haddps", "%xmm1,%xmm0", "SSE3"),
    ("pmulld", "%xmm1,%xmm0", "SSE4.1"), ("pminud", "%xmm1,%xmm0", "SSE4.1"), ("pmovzxbw", "(%rsi),%xmm0", "SSE4.1"),
    ("pcmpgtq", "%xmm1,%xmm0", "SSE4.2"), ("crc32l", "%eax,%ecx", "SSE4.2"), ("popcnt", "%eax,%ecx", "POPCNT"),
    ("vaddps", "%ymm1,%ymm0,%ymm2", "AVX"), ("vpaddd", "%xmm1,%xmm0,%xmm2", "AVX"), ("vmovdqu", "%ymm0,(%rdi)", "AVX"),
    ("vzeroupper", "", "AVX"), ("vldmxcsr", "0x3c(%rsp)", "AVX"), ("vbroadcastss", "(%rsi),%ymm0", "AVX"), ("vcmpltps", "%ymm1,%ymm0,%ymm2", "AVX"),
    ("vbroadcastss", "%xmm1,%ymm0", "AVX2"), ("vpaddd", "%ymm1,%ymm0,%ymm2", "AVX2"), ("vpermq", "$0xd8,%ymm0,%ymm0", "AVX2"),
    ("vpackuswb", "%ymm1,%ymm0,%ymm0", "AVX2"), ("vpbroadcastw", "%xmm0,%xmm0", "AVX2"), ("vpsllvd", "%xmm0,%xmm0,%xmm0", "AVX2"),
    ("vextracti128", "$1,%ymm0,%xmm0", "AVX2"), ("vpmovzxbw", "%xmm0,%ymm0", "AVX2"), ("vfmadd213ps", "%ymm1,%ymm0,%ymm2", "FMA"),
    ("andn", "%eax,%ebx,%ecx", "BMI1"), ("shlx", "%eax,%ebx,%ecx", "BMI2"), ("lzcnt", "%eax,%ecx", "LZCNT"),
    ("movbe", "(%rsi),%eax", "MOVBE"), ("vpaddd", "%zmm1,%zmm0,%zmm2", "AVX-512"), ("vmovdqu32", "%xmm16,%xmm0", "AVX-512"),
    ("vpaddd", "%ymm1,%ymm0,%ymm2{%k1}", "AVX-512"), ("movq", "%mm0,%rax", "MMX"), ("mov", "%rax,%rcx", None), ("tzcnt", "%eax,%ecx", None),
    ("paddb", "%mm0,%mm1", "MMX"),
]
wrong = [(mnemonic, operands, set_of(mnemonic, operands), wanted) for mnemonic, operands, wanted in KNOWN
         if set_of(mnemonic, operands) != wanted]
wrong += [mnemonic for mnemonic in ("vcvtph2ps", "vpclmulqdq", "aesenc", "sha1rnds4", "vgf2p8mulb") if "unknown" not in set_of(mnemonic, "%xmm0,%xmm1")]
print(*wrong, sep="\n")
sys.exit(1 if wrong else 0)
