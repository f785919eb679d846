#pragma once

/// ORB_FOR_EACH(macro, context, (a, b), (c, d)) expands to macro(context, a, b) macro(context, c,
/// d). It lets a class list its fields or constructor attributes once. At most 256 elements.
#define ORB_FOR_EACH(macro, context, ...)                                                          \
    __VA_OPT__(ORB_EXPAND(ORB_FOR_EACH_STEP(macro, context, __VA_ARGS__)))

#define ORB_FOR_EACH_STEP(macro, context, element, ...)                                            \
    ORB_FOR_EACH_CALL(macro, context, ORB_UNWRAP element)                                          \
    __VA_OPT__(ORB_FOR_EACH_AGAIN ORB_PARENS(macro, context, __VA_ARGS__))
#define ORB_FOR_EACH_AGAIN() ORB_FOR_EACH_STEP
#define ORB_FOR_EACH_CALL(macro, context, ...) macro(context, __VA_ARGS__)
#define ORB_UNWRAP(...) __VA_ARGS__
#define ORB_PARENS ()

// Each level rescans four times, which is what makes the recursion of ORB_FOR_EACH_AGAIN unfold.
#define ORB_EXPAND(...) ORB_EXPAND4(ORB_EXPAND4(ORB_EXPAND4(ORB_EXPAND4(__VA_ARGS__))))
#define ORB_EXPAND4(...) ORB_EXPAND3(ORB_EXPAND3(ORB_EXPAND3(ORB_EXPAND3(__VA_ARGS__))))
#define ORB_EXPAND3(...) ORB_EXPAND2(ORB_EXPAND2(ORB_EXPAND2(ORB_EXPAND2(__VA_ARGS__))))
#define ORB_EXPAND2(...) ORB_EXPAND1(ORB_EXPAND1(ORB_EXPAND1(ORB_EXPAND1(__VA_ARGS__))))
#define ORB_EXPAND1(...) __VA_ARGS__
