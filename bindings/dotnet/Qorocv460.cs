// QOROCV460 for .NET, over QOROCV460Safe: faces of photographs as values, failures as exceptions. One source file for
// C# 7.3 and later. No reference in it is null, so that it needs no annotation but "#nullable enable", which the package
// puts before it for compilers that know the line.
using System;
using System.Collections.Generic;
using System.Globalization;
using System.Runtime.InteropServices;
using System.Text;
using System.Threading;

namespace Qorocv460 {
  /// <summary>What every failure of the library is.</summary>
  public class QorocvException : Exception {
    /// <summary>A failure with a message.</summary>
    public QorocvException(string message) : base(message) {}
  }

  /// <summary>Models cannot be opened. The message names them.</summary>
  public sealed class ModelsMissingException : QorocvException {
    /// <summary>A failure with a message.</summary>
    public ModelsMissingException(string message) : base(message) {}
  }

  /// <summary>The photograph is not there, or is none.</summary>
  public sealed class UnreadablePhotoException : QorocvException {
    /// <summary>The photograph, as the caller named it.</summary>
    public string Path { get; }

    /// <summary>A failure with the photograph's name.</summary>
    public UnreadablePhotoException(string path) : base(path + " cannot be read") { Path = path; }
  }

  /// <summary>What finds the boxes.</summary>
  public enum Detector {
    /// <summary>The Haar cascade: looks at every pixel.</summary>
    Cascade,
    /// <summary>The SSD network in Caffe's form: looks at 300 x 300 pixels.</summary>
    Caffe,
    /// <summary>The SSD network in TensorFlow's form.</summary>
    Tensorflow
  }

  /// <summary>A place in a photograph, in its pixels.</summary>
  public struct Point {
    /// <summary>Pixels from the left edge.</summary>
    public double X { get; }
    /// <summary>Pixels from the top edge.</summary>
    public double Y { get; }

    /// <summary>A place, in pixels.</summary>
    public Point(double x, double y) {
      X = x;
      Y = y;
    }
  }

  /// <summary>A face's box, in pixels of the photograph. It may reach beyond it.</summary>
  public struct Box {
    /// <summary>Pixels from the photograph's left edge to the box's.</summary>
    public double Left { get; }
    /// <summary>Pixels from the photograph's top edge to the box's.</summary>
    public double Top { get; }
    /// <summary>Pixels from the photograph's left edge to the box's right one.</summary>
    public double Right { get; }
    /// <summary>Pixels from the photograph's top edge to the box's bottom one.</summary>
    public double Bottom { get; }

    /// <summary>A box, in pixels.</summary>
    public Box(double left, double top, double right, double bottom) {
      Left = left;
      Top = top;
      Right = right;
      Bottom = bottom;
    }

    /// <summary>As "from 1, 2 to 3, 4", in whole pixels.</summary>
    public override string ToString() {
      return string.Format(CultureInfo.InvariantCulture, "from {0:0}, {1:0} to {2:0}, {3:0}", Left, Top, Right,
                           Bottom);
    }
  }

  /// <summary>A face that was found.</summary>
  public sealed class Face {
    /// <summary>Where it is.</summary>
    public Box Box { get; }
    /// <summary>The top of the nose bridge, between the eyes.</summary>
    public Point NoseBridge { get; }
    /// <summary>The tip of the chin.</summary>
    public Point Chin { get; }
    /// <summary>Halfway between the chin and the top of the head; of <see cref="Slot.Find"/> and
    /// <see cref="Slot.FindWithMask"/>.</summary>
    public Point? HeadCentre { get; }
    /// <summary>All 68 landmarks; of <see cref="Library.FindLandmarks"/>, otherwise none.</summary>
    public IReadOnlyList<Point> Landmarks { get; }

    internal Face(Box box, Point noseBridge, Point chin, Point? headCentre, IReadOnlyList<Point> landmarks) {
      Box = box;
      NoseBridge = noseBridge;
      Chin = chin;
      HeadCentre = headCentre;
      Landmarks = landmarks;
    }
  }

  /// <summary>A photograph that was looked at.</summary>
  public class Photo {
    /// <summary>Where it lies.</summary>
    public string Path { get; }
    /// <summary>Columns, in pixels.</summary>
    public int Width { get; }
    /// <summary>Rows, in pixels.</summary>
    public int Height { get; }
    /// <summary>How many boxes were found: more than there are faces where there are more than 30, and where no
    /// landmarks could be fitted.</summary>
    public int Found { get; }
    /// <summary>At most 30, in the library's order.</summary>
    public IReadOnlyList<Face> Faces { get; }

    internal Photo(string path, int width, int height, int found, IReadOnlyList<Face> faces) {
      Path = path;
      Width = width;
      Height = height;
      Found = found;
      Faces = faces;
    }
  }

  /// <summary>A photograph with its person mask.</summary>
  public sealed class MaskedPhoto : Photo {
    /// <summary>Columns and rows of the mask.</summary>
    public const int MaskSide = Numbers.MaskSide;

    private readonly byte[] mask;

    internal MaskedPhoto(Photo photo, byte[] mask)
        : base(photo.Path, photo.Width, photo.Height, photo.Found, photo.Faces) {
      this.mask = mask;
    }

    /// <summary>Whether a pixel of the mask, which stretches over the whole photograph, is a person's.</summary>
    public bool IsPerson(int column, int row) {
      if (column < 0 || column >= MaskSide || row < 0 || row >= MaskSide) {
        throw new ArgumentOutOfRangeException(column < 0 || column >= MaskSide ? nameof(column) : nameof(row));
      }
      return mask[4 * (row * MaskSide + column)] == 255;
    }
  }

  /// <summary>The library: its models, and what needs no slot.</summary>
  public static class Library {
    private static readonly object sharedPair = new object();

    /// <summary>The native library's version.</summary>
    public static string Version { get { return Native.Text(Native.qorocv460_version()); } }

    /// <summary>Tells where the models lie, under their short names. Once, before the first photograph and before
    /// any thread that looks at one is started.</summary>
    /// <exception cref="ModelsMissingException">Models cannot be opened.</exception>
    public static void PlaceModels(string directory) {
      int missing = Native.qorocv460_initModelsAtPath(Native.Utf8(directory, nameof(directory)));
      if (missing == Numbers.Failed) {
        throw new QorocvException(Native.LastError());
      }
      if (missing != 0) {
        throw new ModelsMissingException("models missing in " + directory + ": " +
                                         Native.Text(Native.qorocv460_missingModels(missing)));
      }
    }

    /// <summary>Finds faces with the cascade, and all 68 landmarks of each. Threads take turns.</summary>
    /// <param name="path">The photograph.</param>
    /// <param name="maxSide">Pixels that the longer side is scaled to before; below 1 its own.</param>
    /// <exception cref="UnreadablePhotoException">It is not there, or is none.</exception>
    /// <exception cref="QorocvException">What else goes wrong.</exception>
    public static Photo FindLandmarks(string path, int maxSide = 1000) {
      var results = new double[Numbers.LandmarkResults];
      int count = results.Length, width, height, found;
      lock (sharedPair) {
        found = Native.qorocv460_processImage(Native.Utf8(path, nameof(path)), Native.Utf8("", "outputPath"), results,
                                              ref count, maxSide, false, out width, out height);
      }
      return Native.PhotoOf(path, found, width, height, results, count, Numbers.LandmarkRecord);
    }
  }

  /// <summary>One of the nine slots, which hold detectors: taken from the pool, and given back by
  /// <see cref="Dispose"/>. One thread at a time uses a slot, and a thread
  /// has one at a time: it would wait for its own second one. A slot keeps one form of network: where a call wants the
  /// other, the slot is exchanged for one that has it, or waits for one.</summary>
  public sealed class Slot : IDisposable {
    private readonly object atWork = new object();

    private int number;
    private bool disposed;

    private Slot(int number) { this.number = number; }

    /// <summary>Takes a slot that nobody has; waits for one where all nine are taken.</summary>
    public static Slot Take() { return new Slot(Slots.Take(Slots.AnyNetwork)); }

    /// <summary>Gives the slot back, after a call under way.</summary>
    public void Dispose() {
      lock (atWork) {
        Slots.GiveBack(number);
        number = Slots.None;
        disposed = true;
      }
    }

    /// <summary>Finds faces, with nose bridge, chin, and the centre of the head by the colours above it.</summary>
    /// <param name="path">The photograph.</param>
    /// <param name="detector">What finds the boxes.</param>
    /// <param name="maxSide">Pixels that the longer side is scaled to before; below 1 its own.</param>
    /// <exception cref="UnreadablePhotoException">It is not there, or is none.</exception>
    /// <exception cref="QorocvException">What else goes wrong; also where another thread uses the slot, or all nine
    /// keep the other form of network.</exception>
    public Photo Find(string path, Detector detector = Detector.Caffe, int maxSide = 1000) {
      var results = new double[Numbers.HeadCentreResults];
      int count = results.Length, width, height, found;
      byte[] photo = Native.Utf8(path, nameof(path));
      int kind = detector == Detector.Cascade ? Slots.AnyNetwork : Native.Kind(detector);
      Begin();
      try {
        int slot = NumberFor(kind);
        if (detector == Detector.Cascade) {
          found = Native.qorocv460_findQORFacesHAARInTread_TR02(photo, results, ref count, slot, maxSide, IntPtr.Zero,
                                                               out width, out height);
        } else {
          found = Native.qorocv460_findQORFacesDUNInTread_TR02(photo, results, ref count, kind, slot, maxSide,
                                                              IntPtr.Zero, out width, out height);
        }
      } finally {
        End();
      }
      return Native.PhotoOf(path, found, width, height, results, count, Numbers.HeadCentreRecord);
    }

    /// <summary>Finds faces, with nose bridge, chin, and the centre of the head by the photograph's person mask; and
    /// that mask.</summary>
    /// <param name="path">The photograph.</param>
    /// <param name="detector">Which network finds the boxes; the cascade does not.</param>
    /// <param name="maxSide">Pixels that the longer side is scaled to before; below 1 its own.</param>
    /// <exception cref="UnreadablePhotoException">It is not there, or is none.</exception>
    /// <exception cref="QorocvException">What else goes wrong; also where another thread uses the slot, or all nine
    /// keep the other form of network.</exception>
    public MaskedPhoto FindWithMask(string path, Detector detector = Detector.Caffe, int maxSide = 1000) {
      var results = new double[Numbers.HeadCentreResults];
      var view = new byte[Numbers.ViewBytes];
      var mask = new byte[Numbers.MaskBytes];
      int count = results.Length, width, height, found;
      byte[] photo = Native.Utf8(path, nameof(path));
      int kind = Native.Kind(detector);
      Begin();
      try {
        found = Native.qorocv460_findQORFacesDUNInTreadWithMask01(photo, results, ref count, kind, NumberFor(kind),
                                                                 maxSide, IntPtr.Zero, out width, out height, view,
                                                                 mask);
      } finally {
        End();
      }
      return new MaskedPhoto(
          Native.PhotoOf(path, found, width, height, results, count, Numbers.HeadCentreRecord), mask);
    }

    private void Begin() {
      if (!Monitor.TryEnter(atWork)) {
        throw new QorocvException("the slot is at work for another thread");
      }
    }

    private void End() { Monitor.Exit(atWork); }

    private int NumberFor(int kind) {
      if (disposed) {
        throw new ObjectDisposedException(nameof(Slot));
      }
      int mine = number;
      number = Slots.None; // where no other fits
      number = Slots.Exchange(mine, kind);
      return number;
    }
  }

  // Who has which slot, and the kind of network that each keeps: that of its first call with one. By the other kind's
  // order of colours it would find wrong faces.
  internal static class Slots {
    public const int None = 0;
    public const int AnyNetwork = 0;

    private static readonly object change = new object();
    private static readonly bool[] taken = new bool[Numbers.LastSlot + 1];
    private static readonly int[] networks = new int[Numbers.LastSlot + 1];

    // A slot that nobody has, and that keeps or may load such a network. Waits for one.
    public static int Take(int kind) {
      lock (change) {
        int slot = FindFree(kind);
        while (slot == None) {
          if (!AnyFits(kind)) {
            throw new QorocvException("all nine slots keep the other form of network");
          }
          Monitor.Wait(change);
          slot = FindFree(kind);
        }
        taken[slot] = true;
        Keep(slot, kind);
        return slot;
      }
    }

    // The slot itself where it fits, or another one in its place.
    public static int Exchange(int slot, int kind) {
      lock (change) {
        if (slot != None && Fits(slot, kind)) {
          Keep(slot, kind);
          return slot;
        }
        GiveBack(slot);
        return Take(kind);
      }
    }

    public static void GiveBack(int slot) {
      lock (change) {
        taken[slot] = false;
        Monitor.PulseAll(change);
      }
    }

    // Those that keep the network come first, and low numbers: few slots are loaded.
    private static int FindFree(int kind) {
      for (int slot = Numbers.FirstSlot; slot <= Numbers.LastSlot; ++slot) {
        if (!taken[slot] && kind != AnyNetwork && networks[slot] == kind) {
          return slot;
        }
      }
      for (int slot = Numbers.FirstSlot; slot <= Numbers.LastSlot; ++slot) {
        if (!taken[slot] && Fits(slot, kind)) {
          return slot;
        }
      }
      return None;
    }

    private static bool AnyFits(int kind) {
      for (int slot = Numbers.FirstSlot; slot <= Numbers.LastSlot; ++slot) {
        if (Fits(slot, kind)) {
          return true;
        }
      }
      return false;
    }

    private static bool Fits(int slot, int kind) {
      return kind == AnyNetwork || networks[slot] == AnyNetwork || networks[slot] == kind;
    }

    private static void Keep(int slot, int kind) {
      if (kind != AnyNetwork) {
        networks[slot] = kind;
      }
    }
  }

  // The numbers of qorocv460.h and safe.h, without their prefix.
  internal static class Numbers {
    public const int Failed = -2;
    public const int Unreadable = -1;
    public const int Rejected = 0;
    public const int FirstSlot = 1;
    public const int LastSlot = 9;
    public const int Caffe = 1;
    public const int Tensorflow = 2;
    public const int Landmarks = 68;
    public const int Chin = 8;
    public const int NoseBridge = 27;
    public const int MaxRecords = 30;
    public const int TestValues = 68;
    public const int FaceRecord = 8;
    public const int FaceResults = 241;
    public const int HeadCentreRecord = 10;
    public const int HeadCentreResults = 301;
    public const int LandmarkRecord = 140;
    public const int LandmarkResults = 4201;
    public const int ViewSide = 1000;
    public const int ViewBytes = 4000000;
    public const int MaskSide = 192;
    public const int MaskBytes = 147456;
    public const int CropBox = 4;
  }

  // The functions of safe.h as they are there. Paths are UTF-8 bytes with a terminator.
  internal static class Native {
    private const string Library = "QOROCV460Safe";
    private const CallingConvention C = CallingConvention.Cdecl;

    internal static byte[] Utf8(string text, string name) {
      if (text == null) {
        throw new ArgumentNullException(name);
      }
      if (text.IndexOf('\0') >= 0) {
        throw new ArgumentException("a path holds no character 0", name);
      }
      return Encoding.UTF8.GetBytes(text + "\0");
    }

    internal static string Text(IntPtr text) {
      int length = 0;
      while (Marshal.ReadByte(text, length) != 0) {
        ++length;
      }
      var bytes = new byte[length];
      Marshal.Copy(text, bytes, 0, length);
      return Encoding.UTF8.GetString(bytes);
    }

    internal static string LastError() { return Text(qorocv460_lastError()); }

    internal static int Kind(Detector detector) {
      switch (detector) {
      case Detector.Caffe:
        return Numbers.Caffe;
      case Detector.Tensorflow:
        return Numbers.Tensorflow;
      default:
        throw new ArgumentOutOfRangeException(nameof(detector));
      }
    }

    internal static Photo PhotoOf(string path, int found, int width, int height, double[] results, int count,
                                  int recordSize) {
      if (found == Numbers.Failed) {
        throw new QorocvException(path + ": " + LastError());
      }
      if (found == Numbers.Unreadable) {
        throw new UnreadablePhotoException(path);
      }
      var faces = new List<Face>();
      for (int at = 1; at < count; at += recordSize) {
        faces.Add(FaceOf(results, at, recordSize, width, height));
      }
      return new Photo(path, width, height, found, faces.AsReadOnly());
    }

    private static Face FaceOf(double[] results, int at, int recordSize, int width, int height) {
      var points = new List<Point>();
      for (int i = at + 4; i < at + recordSize; i += 2) {
        points.Add(new Point(results[i] * width, results[i + 1] * height));
      }
      var box = new Box(results[at] * width, results[at + 1] * height, results[at + 2] * width,
                        results[at + 3] * height);
      if (recordSize == Numbers.LandmarkRecord) {
        return new Face(box, points[Numbers.NoseBridge], points[Numbers.Chin], null, points.AsReadOnly());
      }
      return new Face(box, points[0], points[1], points[2], new Point[0]);
    }

    [DllImport(Library, CallingConvention = C)]
    internal static extern IntPtr qorocv460_version();
    [DllImport(Library, CallingConvention = C)]
    internal static extern IntPtr qorocv460_lastError();
    [DllImport(Library, CallingConvention = C)]
    internal static extern IntPtr qorocv460_missingModels(int code);

    [DllImport(Library, CallingConvention = C)]
    internal static extern int qorocv460_findFaces();
    [DllImport(Library, CallingConvention = C)]
    internal static extern int qorocv460_testPass(double[] values, out int count);
    [DllImport(Library, CallingConvention = C)]
    internal static extern int qorocv460_initModelsAtPath(byte[] directory);
    [DllImport(Library, CallingConvention = C)]
    internal static extern int qorocv460_initModelNames();
    [DllImport(Library, CallingConvention = C)]
    internal static extern int qorocv460_initDetector();

    [DllImport(Library, CallingConvention = C)]
    internal static extern int qorocv460_findQORFaces(byte[] imagePath, byte[] outputPath, double[]
        results, ref int resultCount, int maxSide, [MarshalAs(UnmanagedType.I1)] bool show, out int
        width, out int height);
    [DllImport(Library, CallingConvention = C)]
    internal static extern int qorocv460_processImage(byte[] imagePath, byte[] outputPath, double[]
        results, ref int resultCount, int maxSide, [MarshalAs(UnmanagedType.I1)] bool show, out int
        width, out int height);
    [DllImport(Library, CallingConvention = C)]
    internal static extern int qorocv460_showImage(byte[] imagePath, out int width, out int height);

    [DllImport(Library, CallingConvention = C)]
    internal static extern int qorocv460_findQORFacesInTread01(byte[] imagePath, double[] results,
        ref int resultCount, int slot, int maxSide, out int width, out int height);
    [DllImport(Library, CallingConvention = C)]
    internal static extern int qorocv460_findQORFacesInTreadDebug(byte[] imagePath, byte[]
        outputPath, double[] results, ref int resultCount, int slot, int maxSide,
        [MarshalAs(UnmanagedType.I1)] bool show, out int width, out int height);
    [DllImport(Library, CallingConvention = C)]
    internal static extern int qorocv460_findQORFacesHAARInTread_TR02(byte[] imagePath, double[]
        results, ref int resultCount, int slot, int maxSide, IntPtr reserved, out int width, out int
        height);
    [DllImport(Library, CallingConvention = C)]
    internal static extern int qorocv460_findQORFacesHAARInTreadWithMask02(byte[] imagePath,
        double[] results, ref int resultCount, int modelKind, int slot, int maxSide, int reserved,
        out int width, out int height, byte[] viewPixels, byte[] maskPixels, byte[] cropMaskPixels,
        double[] cropBox);

    [DllImport(Library, CallingConvention = C)]
    internal static extern int qorocv460_findQORFacesDUNInTread01(byte[] imagePath, double[]
        results, ref int resultCount, int modelKind, int slot, int maxSide, out int width, out int
        height);
    [DllImport(Library, CallingConvention = C)]
    internal static extern int qorocv460_findQORFacesDUNInTread01Debug(byte[] imagePath, byte[]
        outputPath, [MarshalAs(UnmanagedType.I1)] bool show, double[] results, ref int resultCount,
        int modelKind, int slot, int maxSide, out int width, out int height);
    [DllImport(Library, CallingConvention = C)]
    internal static extern int qorocv460_findQORFacesDUNInTread02(byte[] imagePath, double[]
        results, ref int resultCount, int modelKind, int slot, int maxSide, out int width, out int
        height);
    [DllImport(Library, CallingConvention = C)]
    internal static extern int qorocv460_findQORFacesDUNInTread_TR02(byte[] imagePath, double[]
        results, ref int resultCount, int modelKind, int slot, int maxSide, IntPtr reserved, out int
        width, out int height);
    [DllImport(Library, CallingConvention = C)]
    internal static extern int qorocv460_findQORFacesDUNInTreadWithMask01(byte[] imagePath, double[]
        results, ref int resultCount, int modelKind, int slot, int maxSide, IntPtr reserved, out int
        width, out int height, byte[] viewPixels, byte[] maskPixels);
    [DllImport(Library, CallingConvention = C)]
    internal static extern int qorocv460_findQORFacesDUNInTreadWithMask02(byte[] imagePath, double[]
        results, ref int resultCount, int modelKind, int slot, int maxSide, IntPtr reserved, out int
        width, out int height, byte[] viewPixels, byte[] maskPixels, byte[] cropMaskPixels, double[]
        cropBox);
    [DllImport(Library, CallingConvention = C)]
    internal static extern int qorocv460_findQORMulitFacesDUNInTread_TR02(byte[] imagePath, double[]
        results, ref int resultCount, int tileCol, int gridCols, int tileRow, int gridRows, out int
        tileWidth, out int tileHeight, out int tileLeft, out int tileTop, int modelKind, int slot,
        int maxSide, IntPtr reserved, out int width, out int height);
  }
}
