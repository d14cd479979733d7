// The desktop around the host. Thread: any.
#pragma once

#include "host/text/LightweightString.h"

class ZQ_API iShell {
public:
    // Folder number 5: where downloaded media go. Its text ends in a separator.
    static constexpr int mediaFolder = 5;

    virtual ~iShell();

    // Shows an http or https address in the person's web browser; false for any other address and when no
    // browser could be started. Waits for nothing.
    virtual bool openInBrowser(WideString const& url) = 0;
    // The path of a standard folder, empty for a number that the host does not know.
    [[nodiscard]] virtual WideString getStandardFolder(int number) = 0;
};
