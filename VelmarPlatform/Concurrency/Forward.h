// The main types of the concurrency layer, for headers that only name them.
#pragma once

namespace velmar {

class AsyncDescriptor;
class CancellationError;
class Clock;
class Executor;
class MainExecutor;
class ManualClock;
class SerialExecutor;
class SerialObject;
class TaskScope;

template <class T>
class AsyncStream;
template <class T = void>
class Continuation;
template <class T = void>
class Task;
template <class T = void>
class TaskGroup;
template <class T = void>
class TaskHandle;
template <class T>
class TaskLocal;

} // namespace velmar
