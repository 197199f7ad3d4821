#pragma once
// Dialogs, cursors and raw data, from one file for all languages; captions are numbers of texts.
//
//   dialog ID WIDTH HEIGHT CAPTION          sizes in dialog units; CAPTION 0 for none
//     text ID X Y WIDTH HEIGHT CAPTION
//     icon ID X Y WIDTH HEIGHT
//     button ID X Y WIDTH HEIGHT CAPTION    the first button is the default one
//   end
//   cursor ID X Y                           the hot spot; then at most 32 rows of at most 32 characters:
//     ..#+                                  . or blank transparent, # black, + white, / inverse
//   end
//   data TYPE ID FILE                       a file beside this one as it stands
//   numbers TYPE ID VALUE...                32-bit numbers

#include <string>
#include <vector>

#include "texts.h"

namespace korrc {

/// Compiles the pieces: dialogs once for each language, the rest without language.
std::vector<Resource> readPieces(const std::string& path, const std::vector<Texts>& languages);

}  // namespace korrc
