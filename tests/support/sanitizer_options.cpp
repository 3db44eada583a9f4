// How the sanitizers' runtimes behave in each test program: memory that there is not gives a null pointer, as
// without them, and does not end the program. Their own operator new ends it all the same; a program that
// asks it for too much takes that of failing_memory.h, which throws. An object that an initialiser of another
// source uses before it is built ends the program, in whatever order the linker puts the two.

// NOLINTBEGIN(clang-diagnostic-reserved-identifier): the runtimes look for these names.

extern "C" const char* __asan_default_options();
extern "C" const char* __tsan_default_options();

extern "C" const char* __asan_default_options()
{
    return "allocator_may_return_null=1:check_initialization_order=1:strict_init_order=1:"
           "detect_stack_use_after_return=1";
}

extern "C" const char* __tsan_default_options() { return "allocator_may_return_null=1"; }

// NOLINTEND(clang-diagnostic-reserved-identifier)
