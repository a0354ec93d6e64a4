// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Pictures/JpegErrors.h"

#include <jerror.h>

namespace ScEng {
namespace {

[[noreturn]] void Escape(j_common_ptr jpeg) {
  auto* errors = static_cast<JpegErrors*>(jpeg->err);
  errors->code = errors->msg_code;
  errors->format_message(jpeg, errors->text);
  std::longjmp(errors->escape, 1);
}

void TakeMessage(j_common_ptr jpeg, int level) {
  if (level >= 0) return;
  auto* errors = static_cast<JpegErrors*>(jpeg->err);
  constexpr int kEndMarker = 0xD9;
  const bool is_padding = errors->msg_code == JWRN_EXTRANEOUS_DATA && errors->msg_parm.i[1] == kEndMarker;
  if (is_padding) errors->has_padding = true;
  if (is_padding || errors->msg_code == JWRN_JFIF_MAJOR || errors->msg_code == JWRN_ADOBE_XFORM) return;
  Escape(jpeg);
}

}  // namespace

void PrepareJpegErrors(JpegErrors& errors) {
  jpeg_std_error(&errors);
  errors.error_exit = Escape;
  errors.emit_message = TakeMessage;
  errors.output_message = [](j_common_ptr) {};
}

}  // namespace ScEng
