// FindFaces MODELS/ PHOTO: the box of every face in a photograph, in pixels, and how much of it people fill.
using System;
using System.Globalization;
using System.Runtime.InteropServices;

static class FindFaces {
  static int Main(string[] arguments) {
    if (Qorocv460.initModelsAtPath(Qorocv460.Utf8(arguments[0])) != 0) {
      return 1;
    }
    var results = new double[Qorocv460.HeadCentreResults];
    var view = new byte[Qorocv460.ViewBytes];
    var mask = new byte[Qorocv460.MaskBytes];
    int count = results.Length, width, height;
    try {
      if (Qorocv460.findQORFacesDUNInTreadWithMask01(Qorocv460.Utf8(arguments[1]), results,
              ref count, Qorocv460.Caffe, Qorocv460.FirstSlot, 0, IntPtr.Zero, out width, out height,
              view, mask) == Qorocv460.Unreadable) {
        return 1;
      }
    } catch (SEHException) { // on Windows: a model cannot be read
      return 2;
    }
    for (int at = 1; at < count; at += Qorocv460.HeadCentreRecord) {
      Console.WriteLine(string.Format(CultureInfo.InvariantCulture,
          "from {0:0}, {1:0} to {2:0}, {3:0}", results[at] * width, results[at + 1] * height,
          results[at + 2] * width, results[at + 3] * height));
    }
    int person = 0;
    for (int at = 0; at < mask.Length; at += 4) { // white for a person
      person += mask[at] == 255 ? 1 : 0;
    }
    Console.WriteLine("people fill " + 400 * person / mask.Length + " %");
    return 0;
  }
}
