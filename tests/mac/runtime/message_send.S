// objc_msgSend for x86-64: looks the method up, with all argument registers as they were, and
// jumps there. A message to nil answers zero.

.macro MESSAGE name, object, selector
  .globl \name
  .type \name, @function
\name:
  test \object, \object
  jz 1f
  push %rbp
  mov %rsp, %rbp
  sub $192, %rsp
  mov %rax, (%rsp)
  mov %rdi, 8(%rsp)
  mov %rsi, 16(%rsp)
  mov %rdx, 24(%rsp)
  mov %rcx, 32(%rsp)
  mov %r8, 40(%rsp)
  mov %r9, 48(%rsp)
  movups %xmm0, 64(%rsp)
  movups %xmm1, 80(%rsp)
  movups %xmm2, 96(%rsp)
  movups %xmm3, 112(%rsp)
  movups %xmm4, 128(%rsp)
  movups %xmm5, 144(%rsp)
  movups %xmm6, 160(%rsp)
  movups %xmm7, 176(%rsp)
  mov \object, %rax
  mov \selector, %rsi
  mov %rax, %rdi
  call runtimeLookup
  mov %rax, %r11
  mov (%rsp), %rax
  mov 8(%rsp), %rdi
  mov 16(%rsp), %rsi
  mov 24(%rsp), %rdx
  mov 32(%rsp), %rcx
  mov 40(%rsp), %r8
  mov 48(%rsp), %r9
  movups 64(%rsp), %xmm0
  movups 80(%rsp), %xmm1
  movups 96(%rsp), %xmm2
  movups 112(%rsp), %xmm3
  movups 128(%rsp), %xmm4
  movups 144(%rsp), %xmm5
  movups 160(%rsp), %xmm6
  movups 176(%rsp), %xmm7
  leave
  jmp *%r11
1:
  xor %eax, %eax
  xor %edx, %edx
  pxor %xmm0, %xmm0
  pxor %xmm1, %xmm1
  ret
  .size \name, . - \name
.endm

  .text
MESSAGE objc_msgSend, %rdi, %rsi
MESSAGE objc_msgSend_stret, %rsi, %rdx

// Exceptions are C++ exceptions here, whatever language a function is written in.
  .globl __gnustep_objcxx_personality_v0
__gnustep_objcxx_personality_v0:
  jmp __gxx_personality_v0@PLT
  .globl __gnustep_objc_personality_v0
__gnustep_objc_personality_v0:
  jmp __gxx_personality_v0@PLT

  .section .note.GNU-stack, "", @progbits
