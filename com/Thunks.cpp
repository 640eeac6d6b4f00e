// The vtable slots of the dual interfaces. Every class's vtable is IDispatch's
// seven entries followed by thunk 0, 1, 2, ... for its accessors; the thunks
// are shared by all classes, since a slot only needs to know its number.
//
// Thunk k loads k and jumps to one entry, which stores the four argument
// registers in the caller's shadow space (so positions 0, 1, 2, ... of the
// call lie one after another in 8-byte slots, the fifth on the caller's stack
// right after them), saves XMM1-XMM3 (where floating arguments in positions
// 1-3 travel instead), and calls tylhartCallSlot(k, positions, xmm). The
// wrapper decodes the arguments from the member table. Written for the x64
// calling convention only: 32-bit callers would also need the callee to pop
// a signature-dependent number of bytes.
#include "Com.hpp"

#if !defined(__x86_64__)
#error "The dual interfaces' slot thunks are written for the x64 calling convention"
#endif

#define TYLHART_STRINGIFY2(x) #x
#define TYLHART_STRINGIFY(x) TYLHART_STRINGIFY2(x)

asm(R"(
    .text
    .p2align 4
tylhartSlotEntry:
    .seh_proc tylhartSlotEntry
    movq %rcx, 8(%rsp)
    movq %rdx, 16(%rsp)
    movq %r8, 24(%rsp)
    movq %r9, 32(%rsp)
    subq $72, %rsp
    .seh_stackalloc 72
    .seh_endprologue
    movsd %xmm1, 32(%rsp)
    movsd %xmm2, 40(%rsp)
    movsd %xmm3, 48(%rsp)
    movl %eax, %ecx
    leaq 80(%rsp), %rdx
    leaq 32(%rsp), %r8
    call tylhartCallSlot
    addq $72, %rsp
    ret
    .seh_endproc

    .macro tylhartSlot n
    .p2align 4
tylhartSlot\n:
    movl $\n, %eax
    jmp tylhartSlotEntry
    .endm
    .macro tylhartSlotAddress n
    .quad tylhartSlot\n
    .endm

    .altmacro
    .set tylhartSlotIndex, 0
    .rept )" TYLHART_STRINGIFY(TYLHART_SLOT_CAPACITY) R"(
    tylhartSlot %tylhartSlotIndex
    .set tylhartSlotIndex, tylhartSlotIndex + 1
    .endr

    .section .rdata,"dr"
    .p2align 3
    .globl tylhartSlotThunks
tylhartSlotThunks:
    .set tylhartSlotIndex, 0
    .rept )" TYLHART_STRINGIFY(TYLHART_SLOT_CAPACITY) R"(
    tylhartSlotAddress %tylhartSlotIndex
    .set tylhartSlotIndex, tylhartSlotIndex + 1
    .endr
    .noaltmacro
    .text
)");
