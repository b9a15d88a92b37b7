#pragma once

// Everything that a client of the library needs; the headers can be taken one by one as well.

#include <pkgcore/core/Exception.hpp>
#include <pkgcore/core/StringConversions.hpp>
#include <pkgcore/core/TimeConversions.hpp>
#include <pkgcore/core/Ustring.hpp>
#include <pkgcore/filesystem/FileSystemOps.hpp>
#include <pkgcore/filesystem/FileSystemOpsSelector.hpp>
#include <pkgcore/filesystem/LocalFileSystemOps.hpp>
#include <pkgcore/filesystem/PathHelpers.hpp>
#include <pkgcore/filesystem/VirtualFileSystemOps.hpp>
#include <pkgcore/streams/ByteArrayInAdaptor.hpp>
#include <pkgcore/streams/ByteArrayOutAdaptor.hpp>
#include <pkgcore/streams/COMIStreamInAdaptor.hpp>
#include <pkgcore/streams/COMIStreamOutAdaptor.hpp>
#include <pkgcore/streams/InputStream.hpp>
#include <pkgcore/streams/InputStreamSource.hpp>
#include <pkgcore/streams/OutputStream.hpp>
#include <pkgcore/streams/OutputStreamSink.hpp>
#include <pkgcore/streams/StdIStreamAdaptor.hpp>
#include <pkgcore/streams/StdOStreamAdaptor.hpp>
#include <pkgcore/streams/StreamHelper.hpp>
#include <pkgcore/util/TempNames.hpp>
#include <pkgcore/util/TempdirGuard.hpp>
#include <pkgcore/util/TempfileGuard.hpp>
