#pragma once

#include "Report.hpp"

#include <pkgcore/pkgcore.hpp>

#include <string>
#include <vector>

namespace tour {

struct Copied {
    opc::ustring source;
    opc::ustring copy;
};

/// What the steps share.
struct Tour {
    opc::FileSystemOps& files;
    opc::ustring folder;   ///< the visitor's folder, in normalized form; only ever read
    opc::ustring scratch;  ///< a folder of our own
    opc::ustring copies;   ///< in it: the copied part of the visitor's folder
    std::vector<opc::ustring> listed{};
    std::vector<Copied> copied{};
};

// The steps, in the order in which they are taken.
void listFolder(Tour& tour, Step& step);
void copyPart(Tour& tour, Step& step);
void compareCopies(Tour& tour, Step& step);
void passBytesOn(Tour& tour, Step& step);
void copyBetweenStreams(Tour& tour, Step& step);
void setTimesAndPermissions(Tour& tour, Step& step);
void tellTheTime(Tour& tour, Step& step);
void makeAndFollowLinks(Tour& tour, Step& step);
void copyFolders(Tour& tour, Step& step);
void renameItems(Tour& tour, Step& step);
void removeItems(Tour& tour, Step& step);
void provokeFailures(Tour& tour, Step& step);
void takePathsApart(Tour& tour, Step& step);
void drawTempNames(Tour& tour, Step& step);
void guardTempItems(Tour& tour, Step& step);
void requestByIRI(Tour& tour, Step& step);

/// Text of this length that nowhere repeats, so that no part can stand for another.
std::string numbers(std::size_t length);

/// Writes a whole file through a stream; throws if a byte of it could not be written.
void writeText(opc::FileSystemOps& files, const opc::ustring& path, const std::string& text);

/// Reads a whole file through a stream.
std::string readText(opc::FileSystemOps& files, const opc::ustring& path);

/// The files and links in a folder and below it, as sorted paths relative to it.
std::vector<opc::ustring> relativeListing(opc::FileSystemOps& files, const opc::ustring& folder);

}  // namespace tour
