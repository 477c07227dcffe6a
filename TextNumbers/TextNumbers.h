// TextNumbers.h - strict, locale-independent conversion of text to numbers.
//
// The property classes use these two functions to validate and convert value
// texts. The whole text must be the number: no blanks around it, nothing after
// it. Conversion never depends on the process locale, so a program that
// switched LC_NUMERIC to a locale with a decimal comma still reads "0.1".
//
// Accepted syntax:
//   integer:  [+|-] digit {digit}                      (value must fit in int)
//   double:   [+|-] (digits [. [digits]] | . digits) [(e|E) [+|-] digits]
//             (no hexadecimal form, no "inf", no "nan"; a value whose
//             magnitude is too large for a double, or so small that it would
//             become zero, is rejected)
//
// ABI: the class layout and the signatures below are part of the binary
// interface of libTextNumbers. Do not reorder, insert or remove.

#ifndef TEXTNUMBERS_TEXTNUMBERS_H_
#define TEXTNUMBERS_TEXTNUMBERS_H_

#include <stdexcept>
#include <string>

typedef std::string propstring;

class TextNumbers {
 public:
  // Thrown by StdStringToInteger for a text it does not accept. what() names
  // the text, e.g.: not an integer: "12x".
  class NotAnInteger : public std::invalid_argument {
   public:
    explicit NotAnInteger(const propstring& text);
    virtual ~NotAnInteger() noexcept;
  };

  // Thrown by StdStringToDouble for a text it does not accept. what() names
  // the text, e.g.: not a double: "1,5".
  class NotADouble : public std::invalid_argument {
   public:
    explicit NotADouble(const propstring& text);
    virtual ~NotADouble() noexcept;
  };

  // Returns the value of text. Throws NotAnInteger unless the whole text is an
  // optionally signed run of decimal digits whose value fits in int.
  static int StdStringToInteger(const propstring& text);

  // Returns the value of text. Throws NotADouble unless the whole text is a
  // decimal floating-point number (see the syntax above) that a double holds
  // without overflow or underflow to zero.
  static double StdStringToDouble(const propstring& text);
};

#endif  // TEXTNUMBERS_TEXTNUMBERS_H_
