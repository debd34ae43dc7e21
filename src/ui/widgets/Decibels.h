#pragma once

// Decibels and amplitude, in double precision; the meters and the gain stages share this rule.
namespace waxline::ui {

// 10 ^ (db * 0.05); minus infinity gives 0.
double dbamp(double db);

// 20 * log10(amp); 0 gives minus infinity.
double ampdb(double amp);

} // namespace waxline::ui
