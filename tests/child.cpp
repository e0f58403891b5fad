#include "child.h"

#include <csignal>
#include <iostream>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace client {

Child::Child(const std::function<void()> &work)
{
    std::cout << std::flush;
    m_process = ::fork();
    if (m_process != 0)
        return;
    ::prctl(PR_SET_PDEATHSIG, SIGKILL); // Or it would go on without the test, for ever if it waits for it.
    try {
        work();
    } catch (const std::exception &exception) {
        ADD_FAILURE() << exception.what();
    }
    std::cout << std::flush;
    ::_exit(testing::Test::HasFailure() ? 1 : 0);
}

Child::~Child()
{
    if (m_process != 0) {
        EXPECT_EQ(wait(), 0) << "in the child";
    }
}

void Child::kill()
{
    ::kill(m_process, SIGKILL);
    EXPECT_EQ(wait(), SIGKILL);
    m_process = 0;
}

int Child::wait() const
{
    int status = 0;
    EXPECT_EQ(::waitpid(m_process, &status, 0), m_process);
    return status;
}

SharedNumber::SharedNumber()
    : m_number(::new (::mmap(nullptr, sizeof *m_number, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))
                   std::atomic<unsigned int>(0))
{
}

SharedNumber::~SharedNumber()
{
    ::munmap(m_number, sizeof *m_number);
}

} // namespace client
