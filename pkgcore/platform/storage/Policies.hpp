#pragma once

namespace foundation::storage::provider {

/// What copying and moving do about something that exists at the destination. Whatever the policy, a file is
/// never replaced by a folder nor a folder by a file: that is AlreadyExists.
enum class ReplacementPolicy : unsigned {
    FailIfExists = 0,     ///< anything there, a folder for a folder included, is AlreadyExists
    ReplaceExisting = 1,  ///< it is replaced whole: nothing of an old folder is left in the new one
};

}  // namespace foundation::storage::provider

namespace foundation::storage::vfs {

/// Which folders are removed.
enum class FolderRemovalPolicy : unsigned {
    OnlyIfEmpty = 0,   ///< a folder that holds something is FolderNotEmpty and stays as it is
    WithContents = 1,  ///< with everything in it
};

}  // namespace foundation::storage::vfs
