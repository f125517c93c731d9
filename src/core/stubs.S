/* The exported stubs, the lazy stubs behind them and the table of dispatch records, one pattern for every export. */

#if !defined(__x86_64__) || !defined(__ELF__)
#error "The stubs are written for x86-64 ELF; another system needs its own file here."
#endif

#if defined(__CET__)
#include <cet.h>
#endif

#include "stub_macros.inc"

/* Where every lazy stub goes on, with r11 at the px slot of its record. It saves all registers that can carry an argument,
 * runs kuvInit, and enters the variant that has been selected. kuvInit leaves a valid index in every case. */
    .text
    .hidden kuvLazyResolve
    .globl kuvLazyResolve
    .type kuvLazyResolve, @function
    .p2align 4
kuvLazyResolve:
    .cfi_startproc
    subq $200, %rsp
    .cfi_adjust_cfa_offset 200
    movups %xmm0, (%rsp)
    movups %xmm1, 16(%rsp)
    movups %xmm2, 32(%rsp)
    movups %xmm3, 48(%rsp)
    movups %xmm4, 64(%rsp)
    movups %xmm5, 80(%rsp)
    movups %xmm6, 96(%rsp)
    movups %xmm7, 112(%rsp)
    movq %rdi, 128(%rsp)
    movq %rsi, 136(%rsp)
    movq %rdx, 144(%rsp)
    movq %rcx, 152(%rsp)
    movq %r8, 160(%rsp)
    movq %r9, 168(%rsp)
    movq %r10, 176(%rsp)
    movq %r11, 184(%rsp)
    call kuvInit@PLT
    movups (%rsp), %xmm0
    movups 16(%rsp), %xmm1
    movups 32(%rsp), %xmm2
    movups 48(%rsp), %xmm3
    movups 64(%rsp), %xmm4
    movups 80(%rsp), %xmm5
    movups 96(%rsp), %xmm6
    movups 112(%rsp), %xmm7
    movq 128(%rsp), %rdi
    movq 136(%rsp), %rsi
    movq 144(%rsp), %rdx
    movq 152(%rsp), %rcx
    movq 160(%rsp), %r8
    movq 168(%rsp), %r9
    movq 176(%rsp), %r10
    movq 184(%rsp), %r11
    addq $200, %rsp
    .cfi_adjust_cfa_offset -200
    movslq kuvVariantIndex(%rip), %rax
    jmp *(%r11,%rax,8)
    .cfi_endproc
    .size kuvLazyResolve, . - kuvLazyResolve

    .hidden kuvVariantIndex

#define KUV_DIRECT(name)
#define KUV_DISPATCHED(name, bodies) kuv_export_##bodies name
#include "exports.def"

    .section .note.GNU-stack, "", @progbits
