// What has an identity: the base of classes whose instances are shared, observed and compared by
// address.
#pragma once

namespace velmar {

/// A polymorphic base without behaviour. Whoever gets an `Object` finds out what it is with a
/// dynamic cast; two of them are the same when their addresses are.
class Object {
public:
  Object() = default;
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  Object(Object&&) = delete;
  Object& operator=(Object&&) = delete;
  virtual ~Object() = default;
};

} // namespace velmar
