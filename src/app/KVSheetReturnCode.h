#pragma once

// How a sheet (a window-modal dialog) ended; every dialog uses these codes as
// its QDialog result.
enum class KVSheetReturnCode : int {
    Succeeded = -1002,
    Cancelled = -1001, // cancelled, or the operation failed
    Finished = -1000,  // closed with "Finish" or "Exit"
};
