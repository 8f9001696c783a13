// FixPt.
#include <functional>

#include "host/fmwrapper/handles.h"

namespace fmx {

using namespace orlocal::host;

namespace {

Number* newNumber(std::int32_t value, std::int32_t precision) {
  auto* number = new Number(value);
  number->setPrecision(precision);
  return number;
}

/// A value for a number that keeps its precision.
void assign(void* self, Number value) {
  Number& number = selfOf<FixPt>(self);
  value.setPrecision(number.precision());
  number = std::move(value);
}

template <class Compare>
bool compared(const void* self, const FixPt* that, Exception* x, Compare compare) noexcept {
  return guarded(x, [&] { return compare(selfOf<FixPt>(self), of(that)); });
}

template <class Operation>
void computed(const void* self, const FixPt* arg, FixPt* result, Exception* x, Operation operation) noexcept {
  guarded(x, [&] { of(result) = operation(selfOf<FixPt>(self), of(arg)); });
}

}  // namespace

FM_FUNCTION FixPt* FM_FixPt_Constructor1(std::int32_t val, std::int32_t precision, Exception* x) {
  return guarded(x, [&] { return handleOf<FixPt>(*newNumber(val, precision)); });
}
FM_FUNCTION FixPt* FM_FixPt_Constructor2(std::int32_t val, const FixPt* precisionExample, Exception* x) {
  return guarded(x, [&] { return handleOf<FixPt>(*newNumber(val, of(precisionExample).precision())); });
}
FM_FUNCTION void FM_FixPt_AssignInt(void* self, std::int32_t that, Exception* x) {
  guarded(x, [&] { assign(self, Number(that)); });
}
FM_FUNCTION void FM_FixPt_AssignInt64(void* self, std::int64_t that, Exception* x) {
  guarded(x, [&] { assign(self, Number(that)); });
}
FM_FUNCTION void FM_FixPt_AssignDouble(void* self, double that, Exception* x) {
  guarded(x, [&] { assign(self, Number::fromDouble(that)); });
}
FM_FUNCTION void FM_FixPt_AssignFixPt(void* self, const FixPt* that, Exception* x) {
  guarded(x, [&] { selfOf<FixPt>(self) = of(that); });
}
FM_FUNCTION bool FM_FixPt_operatorEQ(const void* self, const FixPt* that, Exception* x) {
  return compared(self, that, x, std::equal_to{});
}
FM_FUNCTION bool FM_FixPt_operatorNE(const void* self, const FixPt* that, Exception* x) {
  return compared(self, that, x, std::not_equal_to{});
}
FM_FUNCTION bool FM_FixPt_operatorLT(const void* self, const FixPt* that, Exception* x) {
  return compared(self, that, x, std::less{});
}
FM_FUNCTION bool FM_FixPt_operatorLE(const void* self, const FixPt* that, Exception* x) {
  return compared(self, that, x, std::less_equal{});
}
FM_FUNCTION bool FM_FixPt_operatorGT(const void* self, const FixPt* that, Exception* x) {
  return compared(self, that, x, std::greater{});
}
FM_FUNCTION bool FM_FixPt_operatorGE(const void* self, const FixPt* that, Exception* x) {
  return compared(self, that, x, std::greater_equal{});
}
FM_FUNCTION void FM_FixPt_Increment(void* self, std::int32_t n, Exception* x) {
  guarded(x, [&] { assign(self, selfOf<FixPt>(self) + Number(n)); });
}
FM_FUNCTION void FM_FixPt_Increment64(void* self, std::int64_t n, Exception* x) {
  guarded(x, [&] { assign(self, selfOf<FixPt>(self) + Number(n)); });
}
FM_FUNCTION void FM_FixPt_Decrement(void* self, std::int32_t n, Exception* x) {
  guarded(x, [&] { assign(self, selfOf<FixPt>(self) - Number(n)); });
}
FM_FUNCTION void FM_FixPt_Decrement64(void* self, std::int64_t n, Exception* x) {
  guarded(x, [&] { assign(self, selfOf<FixPt>(self) - Number(n)); });
}
FM_FUNCTION void FM_FixPt_Negate(void* self, Exception* x) {
  guarded(x, [&] { assign(self, -selfOf<FixPt>(self)); });
}
FM_FUNCTION std::int32_t FM_FixPt_GetPrecision(const void* self, Exception* x) {
  return guarded(x, [&] { return selfOf<FixPt>(self).precision(); });
}
FM_FUNCTION void FM_FixPt_SetPrecision(void* self, std::int32_t precision, Exception* x) {
  guarded(x, [&] { selfOf<FixPt>(self).setPrecision(precision); });
}
FM_FUNCTION void FM_FixPt_Add(const void* self, const FixPt* arg, FixPt* result, Exception* x) {
  computed(self, arg, result, x, std::plus{});
}
FM_FUNCTION void FM_FixPt_Subtract(const void* self, const FixPt* arg, FixPt* result, Exception* x) {
  computed(self, arg, result, x, std::minus{});
}
FM_FUNCTION void FM_FixPt_Multiply(const void* self, const FixPt* arg, FixPt* result, Exception* x) {
  computed(self, arg, result, x, std::multiplies{});
}
FM_FUNCTION ErrorCode FM_FixPt_Divide(const void* self, const FixPt* arg, FixPt* result, Exception* x) {
  return guarded(x, [&] {
    const Number& divisor = of(arg);
    const Number& dividend = selfOf<FixPt>(self);
    Number& quotient = of(result);
    // Nothing is written for a division by zero: the error is the answer.
    if (divisor.isZero()) { return Registry::kRefused; }
    quotient = dividend / divisor;
    return ErrorCode{0};
  });
}
FM_FUNCTION bool FM_FixPt_AsBool(const void* self, Exception* x) {
  return guarded(x, [&] {
    const Number& number = selfOf<FixPt>(self);
    return number.isNumber() && !number.isZero();
  });
}
FM_FUNCTION std::int32_t FM_FixPt_AsLong(const void* self, Exception* x) {
  // The low 32 bits: a number that needs more comes out as something else, without an error.
  return guarded(x, [&] { return static_cast<std::int32_t>(selfOf<FixPt>(self).toInt64()); });
}
FM_FUNCTION std::int64_t FM_FixPt_AsLong64(const void* self, Exception* x) {
  return guarded(x, [&] { return selfOf<FixPt>(self).toInt64(); });
}
FM_FUNCTION double FM_FixPt_AsFloat(const void* self, Exception* x) {
  return guarded(x, [&] { return selfOf<FixPt>(self).toDouble(); });
}
FM_FUNCTION void FM_FixPt_Delete(void* self, Exception*) { deleteHandle<FixPt>(self); }

}  // namespace fmx
