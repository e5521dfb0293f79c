// EncoderOutputDialog: the encoder output's property dialog, without the drawing. For the desktop program.
#pragma once

#include "core/PropertySheet.h"
#include "outputs/encoder/clsZEBEncoderOutput.h"

namespace zeb {

PropertySheet EncoderSheet(clsZEBEncoderOutput& draft);

}  // namespace zeb
