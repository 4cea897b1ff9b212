// DotnetErrors MODELS PHOTO NO-PHOTO: what a .NET host sees of everything that goes wrong, and of every call. Ends with
// the number of what was not as expected.
using System;
using System.Collections.Generic;
using System.Threading;
using Qorocv460;

static class DotnetErrors {
  static int wrong;

  static void Expect(bool isSo, string what) {
    if (!isSo) {
      Console.WriteLine("not so: " + what);
      ++wrong;
    }
  }

  static string MessageOf<Error>(Action action) where Error : Exception {
    try {
      action();
    } catch (Error error) {
      return error.Message;
    }
    return "nothing was thrown";
  }

  static void ExpectMessage<Error>(string part, Action action) where Error : Exception {
    string message = MessageOf<Error>(action);
    Expect(message.Contains(part), "'" + part + "' in: " + message);
  }

  // Two threads look for faces on one slot until either was refused.
  static string RefusalOfASecondThread(Slot slot, string photo) {
    string refusal = "";
    Action findUntilRefused = () => {
      while (Volatile.Read(ref refusal) == "") {
        try {
          slot.Find(photo);
        } catch (QorocvException error) {
          Volatile.Write(ref refusal, error.Message);
        }
      }
    };
    var second = new Thread(() => findUntilRefused());
    second.Start();
    findUntilRefused();
    second.Join();
    return refusal;
  }

  static bool HasBackground(MaskedPhoto photo) {
    for (int column = 0; column < MaskedPhoto.MaskSide; ++column) {
      if (!photo.IsPerson(column, 0)) {
        return true;
      }
    }
    return false;
  }

  static void ExpectFaces(Slot slot, string photo) {
    Photo found = slot.Find(photo);
    Expect(found.Width == 512 && found.Height == 512, "the size");
    Expect(found.Faces.Count == 1 && found.Found == 1, "one face by Caffe's network");
    Face face = found.Faces[0];
    Expect(face.Box.Left < face.NoseBridge.X && face.NoseBridge.X < face.Box.Right, "the nose bridge in the box");
    Expect(face.NoseBridge.Y < face.Chin.Y, "the chin below it");
    Expect(face.HeadCentre.HasValue && face.HeadCentre.Value.X == face.NoseBridge.X, "the head's centre");
    // It takes the suit for a face, too.
    Expect(slot.Find(photo, Detector.Cascade, 0).Found == 2, "two boxes by the cascade");
    MaskedPhoto masked = slot.FindWithMask(photo);
    Point bridge = masked.Faces[0].NoseBridge;
    Expect(masked.IsPerson((int)(bridge.X * MaskedPhoto.MaskSide / masked.Width),
                           (int)(bridge.Y * MaskedPhoto.MaskSide / masked.Height)), "a person's nose bridge");
    Expect(HasBackground(masked), "background beside the person");
    Photo landmarks = Library.FindLandmarks(photo);
    Expect(landmarks.Faces[0].Landmarks.Count == 68, "68 landmarks");
    Expect(!landmarks.Faces[0].HeadCentre.HasValue, "no head centre with landmarks");
  }

  // Where the networks see the face. One that is given its colours in the other's order sees it elsewhere.
  static string BoxBy(Detector network) {
    return network == Detector.Caffe ? "from 180, 58 to 273, 180" : "from 179, 59 to 272, 177";
  }

  static void ExpectBox(Slot slot, string photo, Detector network) {
    Expect(slot.Find(photo, network).Faces[0].Box.ToString() == BoxBy(network), "the box of " + network);
    Expect(slot.FindWithMask(photo, network).Faces[0].Box.ToString() == BoxBy(network), "with a mask, too");
  }

  static void ExpectBothNetworks(Slot slot, string photo) {
    ExpectBox(slot, photo, Detector.Caffe);
    ExpectBox(slot, photo, Detector.Tensorflow);
    ExpectBox(slot, photo, Detector.Caffe);
    using (Slot other = Slot.Take()) {
      ExpectBox(other, photo, Detector.Caffe);
      ExpectBox(other, photo, Detector.Tensorflow);
    }
  }

  static void ExpectNineSlotsAtOnce(string photo) {
    int found = 0;
    var threads = new List<Thread>();
    for (int i = 0; i < 12; ++i) { // more than there are slots
      Detector network = i % 2 == 0 ? Detector.Caffe : Detector.Tensorflow;
      threads.Add(new Thread(() => {
        using (Slot slot = Slot.Take()) {
          if (slot.Find(photo, network).Faces[0].Box.ToString() == BoxBy(network)) {
            Interlocked.Increment(ref found);
          }
        }
      }));
    }
    threads.ForEach(thread => thread.Start());
    threads.ForEach(thread => thread.Join());
    Expect(found == 12, "12 threads find the face");
  }

  static int Main(string[] arguments) {
    string models = arguments[0], photo = arguments[1], noPhoto = arguments[2];
    ExpectMessage<ModelsMissingException>("model06.xml (haarcascade_frontalface_alt.xml)",
                                          () => Library.PlaceModels("nowhere"));
    Slot slot = Slot.Take();
    ExpectMessage<QorocvException>("nowhere", () => slot.Find(photo));
    Library.PlaceModels(models);
    ExpectMessage<UnreadablePhotoException>("no-such-photo.jpg", () => slot.Find("no-such-photo.jpg"));
    ExpectMessage<UnreadablePhotoException>(noPhoto, () => slot.Find(noPhoto));
    ExpectMessage<UnreadablePhotoException>(noPhoto, () => Library.FindLandmarks(noPhoto));
    ExpectMessage<ArgumentNullException>("path", () => slot.Find(null));
    ExpectMessage<ArgumentOutOfRangeException>("detector", () => slot.FindWithMask(photo, Detector.Cascade));
    ExpectFaces(slot, photo);
    ExpectBothNetworks(slot, photo);
    ExpectMessage<QorocvException>("is at work for another thread", () => {
      throw new QorocvException(RefusalOfASecondThread(slot, photo));
    });
    slot.Dispose();
    slot.Dispose();
    ExpectMessage<ObjectDisposedException>("Slot", () => slot.Find(photo));
    ExpectNineSlotsAtOnce(photo);
    Expect(Library.Version.StartsWith("0."), "the version");
    Console.WriteLine(wrong + " wrong");
    return wrong;
  }
}
