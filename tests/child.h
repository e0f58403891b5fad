#pragma once

#include "client.h"

namespace client {

/// A child process, which does something and ends without cleaning up, as if it were killed.
class Child
{
public:
    explicit Child(const std::function<void()> &work);
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;
    /// Waits until it has ended; what has failed there has failed here, too.
    ~Child();

    void kill();

private:
    [[nodiscard]] int wait() const;

    int m_process;
};

/// A test that has children which launch the cache.
class ParentTest : public DirectoryTest
{
    void SetUp() override
    {
#ifdef __SANITIZE_THREAD__
        GTEST_SKIP() << "ThreadSanitizer does not let a child start threads";
#endif
    }
};

/// A number that this process and its children share.
class SharedNumber
{
public:
    SharedNumber();
    SharedNumber(const SharedNumber &) = delete;
    SharedNumber &operator=(const SharedNumber &) = delete;
    ~SharedNumber();

    std::atomic<unsigned int> &operator*() { return *m_number; }

private:
    std::atomic<unsigned int> *m_number;
};

} // namespace client
