#include <cstdio>
#include <string>
#include <tarnel/tarnel.h>
#include <thread>

int main()
{
    std::thread cache(launchCache); // Opens CacheDb in the current directory, or makes it, and stays in the call.
    while (getState() != TARNEL_STATE_RUNNING)
        std::this_thread::yield();
    std::printf("launch result %u\n", getLaunchCacheResult()); // 100 for a new file, 0 from then on

    const std::u16string text = uR"({"D": {"items": [{"id": 7, "iso": "el", "description": "Ελληνικά"}]}})";
    const auto *units = reinterpret_cast<const unsigned short *>(text.data());
    const unsigned int added = addLocales(units, static_cast<unsigned int>(text.size()));

    tarnelLib::api::Locale *locale = nullptr; // An output must be null, or nothing is handed out.
    if (added == TARNEL_SUCCESS && getLocale(&locale, 7) == TARNEL_SUCCESS)
        std::printf("locale %u begins with U+%04X\n", locale->id, unsigned{locale->description[0]});
    const unsigned int freed = freeLocale(locale);

    exitCache();
    cache.join();
    return freed == TARNEL_SUCCESS ? 0 : 1;
}
