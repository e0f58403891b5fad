/// Starts the cache, fills it if it is new, and stops it.
#include <iostream>
#include <tarnel/tarnel.hpp>

using namespace tarnel;

namespace {

/// What the server sends stands in for it here.
void askServerForEverything(const Cache &cache)
{
    cache.add<User>(R"({"D": {"items": [{"id": 7, "name": "Ada", "active": 1}]}})").value();
}

} // namespace

//! [all]
int main()
{
    Cache cache; // Its end stops it.
    const auto launch = cache.start();
    if (!launch) {
        std::cerr << launch.error().what() << '\n';
        return 1;
    }
    if (launch->isNew())
        askServerForEverything(cache);

    const auto ada = cache.get<User>(7);
    if (!ada)
        return 1;
    std::cout << utf8(ada->name) << '\n';
}
//! [all]
