// Connects to the X server and asks for the pixels of the whole screen: the least that a picture of it can cost.

#include <stdlib.h>

#include <xcb/xcb.h>

int main(void) {
  xcb_connection_t* const connection = xcb_connect(NULL, NULL);
  if (xcb_connection_has_error(connection)) return 1;
  const xcb_screen_t* const screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
  const xcb_get_image_cookie_t cookie = xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, screen->root, 0, 0,
                                                      screen->width_in_pixels, screen->height_in_pixels, 0xFFFFFFFF);
  xcb_get_image_reply_t* const image = xcb_get_image_reply(connection, cookie, NULL);
  const int status = image != NULL ? 0 : 1;
  free(image);
  xcb_disconnect(connection);
  return status;
}
