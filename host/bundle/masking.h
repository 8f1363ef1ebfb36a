// Masking the secrets of a whole folder.
#pragma once

#include "mask/masker.h"
#include "result/contents.h"
#include "run/signal_watch.h"
#include "support/folder.h"

namespace host {

// Masks what the names of files and folders hold.
void mask_names(const OutputFolder& folder, Masker& masker);

// Masks every file of the folder, and writes there which masks stand where. A file that needs no
// mask stays as it is; any other gets a new one in its place. What is no text is taken out of the
// contents, unless a rule keeps it. Where something goes wrong, or a signal asks for the end, the
// contents say that not everything is masked.
void mask_files(const OutputFolder& folder, Contents& contents, Masker& masker,
                const SignalWatch& signals);

}  // namespace host
