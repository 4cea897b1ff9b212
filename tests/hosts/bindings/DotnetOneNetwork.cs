// DotnetOneNetwork MODELS PHOTO TEXT-FILE: what becomes of a host once all nine slots keep one form of network. Ends
// with the number of what was not as expected.
using System;
using System.Collections.Generic;
using Qorocv460;

static class DotnetOneNetwork {
  static int Main(string[] arguments) {
    string models = arguments[0], photo = arguments[1], noPhoto = arguments[2];
    int wrong = 0;
    Library.PlaceModels(models);
    var slots = new List<Slot>();
    for (int i = 0; i < 9; ++i) {
      slots.Add(Slot.Take());
      try {
        slots[i].Find(noPhoto, Detector.Tensorflow); // which chooses the network, and loads none
      } catch (UnreadablePhotoException) {
      }
    }
    string message = "nothing was thrown";
    try {
      slots[0].Find(photo, Detector.Caffe);
    } catch (QorocvException error) {
      message = error.Message;
    }
    if (message != "all nine slots keep the other form of network") {
      Console.WriteLine("not so: " + message);
      ++wrong;
    }
    if (slots[0].Find(photo, Detector.Tensorflow).Found != 1) {
      Console.WriteLine("not so: the slot still works");
      ++wrong;
    }
    slots.ForEach(slot => slot.Dispose());
    Console.WriteLine(wrong + " wrong");
    return wrong;
  }
}
