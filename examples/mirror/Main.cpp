// Makes one folder hold what another holds, whatever kind of storage each is in:
//
//     mirror [--delete] FROM [VIA...] TO
//
// FROM and TO are native paths or IRIs: file:///folder, or mem://name/folder for memory, which lasts as long
// as the program (the table of schemes is in Stores.cpp). Each place is mirrored to the next one; those on
// the way are IRIs, so that a forgotten quote around a pattern does not write into every folder that it fits.
//
// What is new or different is copied: files and folders, empty ones too, with their times as far as both
// places keep them. Permissions go along between places of this machine, and elsewhere whether a file may be
// written. Links are copied as links between places of this machine, never followed, and left out elsewhere,
// with their names; pipes and devices, which no listing shows, are left out everywhere. What is at the
// destination alone is removed only with --delete, and not after a failure.
//
// A file takes its name when it is complete, so that an interrupted run leaves no half of one. The exit
// status is 0 if all went well, 1 if something did not, and 2 if the command makes no sense.

#include "../support/HostPath.hpp"
#include "../support/Interruption.hpp"
#include "Mirroring.hpp"
#include "Stores.hpp"

#include <algorithm>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using mirror::Place;

const std::string kDelete = "--delete";

/// Deleting in a folder that holds the source would delete the source.
void requireApart(const std::vector<Place>& places) {
    for (auto place = places.begin(); place != places.end(); ++place) {
        if (std::any_of(places.begin(), place,
                        [&](const Place& before) { return overlap(before, *place); })) {
            throw std::invalid_argument("places that are the same or hold one another");
        }
    }
}

void requireIRIsOnTheWay(const std::vector<Place>& places) {
    const bool areIRIs = std::all_of(places.begin() + 1, places.end() - 1, [&](const Place& place) {
        return &place.files == &place.stores.selector.getVirtual();
    });
    if (!areIRIs) {
        throw std::invalid_argument("a place on the way that is no IRI");
    }
}

std::vector<Place> placesFor(const mirror::Stores& stores, const std::vector<opc::ustring>& arguments) {
    std::vector<Place> places;
    places.reserve(arguments.size());
    for (const opc::ustring& argument : arguments) {
        places.push_back(placeFor(stores, argument));
    }
    requireIRIsOnTheWay(places);
    requireApart(places);
    return places;
}

/// True if all went well. A failure on the way keeps all that comes after it from removing anything.
bool mirrorAlong(const std::vector<Place>& places, bool mayRemove) {
    bool well = true;
    bool begun = true;
    for (std::size_t i = 1; i < places.size() && begun; ++i) {
        mirror::Mirroring mirroring(places[i - 1], places[i]);
        begun = mirroring.run(mayRemove && well);
        mirroring.tally().print(places[i - 1].given, places[i].given);
        well = well && mirroring.tally().failures == 0;
    }
    return well;
}

/// False for an option that there is not.
bool takeOptions(std::vector<std::string>& arguments, bool& mayRemove) {
    const auto end = std::remove(arguments.begin(), arguments.end(), kDelete);
    mayRemove = end != arguments.end();
    arguments.erase(end, arguments.end());
    return std::none_of(arguments.begin(), arguments.end(), [](const std::string& argument) {
        return argument.empty() || argument.compare(0, 2, "--") == 0;
    });
}

bool mirrorArguments(const std::vector<std::string>& arguments, bool mayRemove) {
    std::vector<opc::ustring> paths(arguments.size());
    std::transform(arguments.begin(), arguments.end(), paths.begin(), pathFromHost);
    const mirror::Stores stores = mirror::openStores(paths);
    return mirrorAlong(placesFor(stores, paths), mayRemove);
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<std::string> arguments(argv + std::min(argc, 1), argv + argc);
    bool mayRemove = false;
    if (!takeOptions(arguments, mayRemove) || arguments.size() < 2) {
        std::cerr << "usage: mirror [--delete] FROM [VIA...] TO\n";
        return 2;
    }
    handleSignals();
    try {
        return mirrorArguments(arguments, mayRemove) ? 0 : 1;
    } catch (const std::invalid_argument& failure) {
        std::cerr << "mirror: " << failure.what() << "\n";
        return 2;
    } catch (const std::exception& failure) {
        std::cerr << "mirror: " << failure.what() << "\n";
        return 1;
    }
}
