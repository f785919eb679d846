#pragma once

#include <stdexcept>

namespace Orb {

/// What the framework throws at whoever misuses a mutator or hands in bad text. An error leaves
/// the object that refused unchanged.
class Error : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// A name is taken by an object that was made from other constructor arguments.
class NameInUseError : public Error {
  public:
    using Error::Error;
};

/// A mutator that stores an object was handed none.
class NullArgumentError : public Error {
  public:
    using Error::Error;
};

/// A reactor read a key as what it is not.
class KeyTypeError : public Error {
  public:
    using Error::Error;
};

/// Something that needs the activity manager of its thread was done where there is none.
class NoActivityManagerError : public Error {
  public:
    using Error::Error;
};

/// A value lies outside its type's range.
class RangeError : public Error {
  public:
    using Error::Error;
};

/// A text is not the text form of the type that was asked for.
class ParseError : public Error {
  public:
    using Error::Error;
};

} // namespace Orb
