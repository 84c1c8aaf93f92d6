#pragma once

// Expands MACRO(context, argument), once for each argument. The repeated evaluation is the
// recursive-macro technique that __VA_OPT__ made possible; it reaches some 300 arguments.

#define QV_PARENTHESES ()
#define QV_EXPAND(...) QV_EXPAND4(QV_EXPAND4(QV_EXPAND4(QV_EXPAND4(__VA_ARGS__))))
#define QV_EXPAND4(...) QV_EXPAND3(QV_EXPAND3(QV_EXPAND3(QV_EXPAND3(__VA_ARGS__))))
#define QV_EXPAND3(...) QV_EXPAND2(QV_EXPAND2(QV_EXPAND2(QV_EXPAND2(__VA_ARGS__))))
#define QV_EXPAND2(...) QV_EXPAND1(QV_EXPAND1(QV_EXPAND1(QV_EXPAND1(__VA_ARGS__))))
#define QV_EXPAND1(...) __VA_ARGS__
#define QV_FOR_EACH(macro, context, ...) __VA_OPT__(QV_EXPAND(QV_FOR_EACH_STEP(macro, context, __VA_ARGS__)))
#define QV_FOR_EACH_STEP(macro, context, first, ...) \
  macro(context, first) __VA_OPT__(QV_FOR_EACH_AGAIN QV_PARENTHESES(macro, context, __VA_ARGS__))
#define QV_FOR_EACH_AGAIN() QV_FOR_EACH_STEP
