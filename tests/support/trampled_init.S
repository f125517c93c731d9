/* kuvInit as the lazy stubs see it in the test program: after the real one, every register that a function may destroy is
 * destroyed, so that a lazy stub which relies on kuvInit's leaving one alone is found out. */

#if defined(__CET__)
#include <cet.h>
#endif

    .text
    .globl __wrap_kuvInit
    .type __wrap_kuvInit, @function
__wrap_kuvInit:
    .cfi_startproc
    endbr64
    pushq %rbx
    .cfi_adjust_cfa_offset 8
    .cfi_rel_offset rbx, 0
    leaq 16(%rsp), %rdi
    call kuvTestLazyEntry
    call __real_kuvInit
    movl %eax, %ebx
    pcmpeqd %xmm0, %xmm0
    movdqa %xmm0, %xmm1
    movdqa %xmm0, %xmm2
    movdqa %xmm0, %xmm3
    movdqa %xmm0, %xmm4
    movdqa %xmm0, %xmm5
    movdqa %xmm0, %xmm6
    movdqa %xmm0, %xmm7
    movdqa %xmm0, %xmm8
    movdqa %xmm0, %xmm9
    movdqa %xmm0, %xmm10
    movdqa %xmm0, %xmm11
    movdqa %xmm0, %xmm12
    movdqa %xmm0, %xmm13
    movdqa %xmm0, %xmm14
    movdqa %xmm0, %xmm15
    movq $-0x21524111, %rcx
    movq %rcx, %rdx
    movq %rcx, %rsi
    movq %rcx, %rdi
    movq %rcx, %r8
    movq %rcx, %r9
    movq %rcx, %r10
    movq %rcx, %r11
    movl %ebx, %eax
    popq %rbx
    .cfi_adjust_cfa_offset -8
    .cfi_restore rbx
    ret
    .cfi_endproc
    .size __wrap_kuvInit, . - __wrap_kuvInit

    .section .note.GNU-stack, "", @progbits
