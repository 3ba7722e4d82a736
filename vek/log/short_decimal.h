// Decimal texts of everyday numbers, such as 12.5 and 0.003: several times as fast as
// std::to_chars, which treats all numbers alike and needs wide arithmetic for that.
#pragma once

namespace vek::log {

// The room that the texts need.
inline constexpr int shortDecimalSize = 16;

// Return the start of the text, which ends at `end`; null if the number or the precision is beyond
// what is treated here. The texts are those of printf, exact and with halves rounded to even. They
// throw nothing.
//
// As "%.*g" prints it. For magnitudes from 0.0001 to some 100,000 and a precision of 1 to 9.
char* shortGeneral(char* end, double number, int precision);

// As "%.*f" prints it. For magnitudes from some 0.0001 to some 100,000 and a precision of up to 9,
// as long as there are not more than 9 digits altogether.
char* shortFixed(char* end, double number, int precision);

}  // namespace vek::log
