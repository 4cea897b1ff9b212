// FirstProgram MODELS PHOTO...: the box of every face in photographs, in pixels.
using System;
using Qorocv460;

static class FirstProgram {
  static int Main(string[] arguments) {
    if (arguments.Length < 2) {
      Console.Error.WriteLine("FirstProgram MODELS PHOTO...");
      return 2;
    }
    int bad = 0;
    try {
      Library.PlaceModels(arguments[0]);
    } catch (QorocvException error) {
      Console.Error.WriteLine(error.Message);
      return 2;
    }
    using (Slot slot = Slot.Take()) {
      for (int i = 1; i < arguments.Length; ++i) {
        try {
          Photo photo = slot.Find(arguments[i]);
          Console.WriteLine(photo.Path + ": " + photo.Found + " found");
          foreach (Face face in photo.Faces) {
            Console.WriteLine(face.Box);
          }
        } catch (QorocvException error) {
          Console.Error.WriteLine(error.Message);
          bad = 1;
        }
      }
    }
    return bad;
  }
}
