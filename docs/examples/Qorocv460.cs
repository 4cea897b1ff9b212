// All functions of the library for C#. Paths are UTF-8 bytes with a terminator: Utf8("photo.jpg").
using System;
using System.Runtime.InteropServices;
using System.Text;

static class Qorocv460 {
  const string Library = "QOROCV460";
  const CallingConvention C = CallingConvention.Cdecl;

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

  public static byte[] Utf8(string text) { return Encoding.UTF8.GetBytes(text + "\0"); }

  [DllImport(Library, CallingConvention = C)]
  public static extern int findFaces();
  [DllImport(Library, CallingConvention = C)]
  public static extern int testPass(double[] values, out int count);
  [DllImport(Library, CallingConvention = C)]
  public static extern int initModelsAtPath(byte[] directory);
  [DllImport(Library, CallingConvention = C)]
  public static extern int initModelNames();
  [DllImport(Library, CallingConvention = C)]
  public static extern int initDetector();

  [DllImport(Library, CallingConvention = C)]
  public static extern int findQORFaces(byte[] imagePath, byte[] outputPath, double[] results,
      ref int resultCount, int maxSide, [MarshalAs(UnmanagedType.I1)] bool show, out int width,
      out int height);
  [DllImport(Library, CallingConvention = C)]
  public static extern int processImage(byte[] imagePath, byte[] outputPath, double[] results,
      ref int resultCount, int maxSide, [MarshalAs(UnmanagedType.I1)] bool show, out int width,
      out int height);
  [DllImport(Library, CallingConvention = C)]
  public static extern int showImage(byte[] imagePath, out int width, out int height);

  [DllImport(Library, CallingConvention = C)]
  public static extern int findQORFacesInTread01(byte[] imagePath, double[] results,
      ref int resultCount, int slot, int maxSide, out int width, out int height);
  [DllImport(Library, CallingConvention = C)]
  public static extern int findQORFacesInTreadDebug(byte[] imagePath, byte[] outputPath,
      double[] results, ref int resultCount, int slot, int maxSide,
      [MarshalAs(UnmanagedType.I1)] bool show, out int width, out int height);
  [DllImport(Library, CallingConvention = C)]
  public static extern int findQORFacesHAARInTread_TR02(byte[] imagePath, double[] results,
      ref int resultCount, int slot, int maxSide, IntPtr reserved, out int width, out int height);
  [DllImport(Library, CallingConvention = C)]
  public static extern int findQORFacesHAARInTreadWithMask02(byte[] imagePath, double[] results,
      ref int resultCount, int modelKind, int slot, int maxSide, int reserved, out int width,
      out int height, byte[] viewPixels, byte[] maskPixels, byte[] cropMaskPixels, double[] cropBox);

  [DllImport(Library, CallingConvention = C)]
  public static extern int findQORFacesDUNInTread01(byte[] imagePath, double[] results,
      ref int resultCount, int modelKind, int slot, int maxSide, out int width, out int height);
  [DllImport(Library, CallingConvention = C)]
  public static extern int findQORFacesDUNInTread01Debug(byte[] imagePath, byte[] outputPath,
      [MarshalAs(UnmanagedType.I1)] bool show, double[] results, ref int resultCount, int modelKind,
      int slot, int maxSide, out int width, out int height);
  [DllImport(Library, CallingConvention = C)]
  public static extern int findQORFacesDUNInTread02(byte[] imagePath, double[] results,
      ref int resultCount, int modelKind, int slot, int maxSide, out int width, out int height);
  [DllImport(Library, CallingConvention = C)]
  public static extern int findQORFacesDUNInTread_TR02(byte[] imagePath, double[] results,
      ref int resultCount, int modelKind, int slot, int maxSide, IntPtr reserved, out int width,
      out int height);
  [DllImport(Library, CallingConvention = C)]
  public static extern int findQORFacesDUNInTreadWithMask01(byte[] imagePath, double[] results,
      ref int resultCount, int modelKind, int slot, int maxSide, IntPtr reserved, out int width,
      out int height, byte[] viewPixels, byte[] maskPixels);
  [DllImport(Library, CallingConvention = C)]
  public static extern int findQORFacesDUNInTreadWithMask02(byte[] imagePath, double[] results,
      ref int resultCount, int modelKind, int slot, int maxSide, IntPtr reserved, out int width,
      out int height, byte[] viewPixels, byte[] maskPixels, byte[] cropMaskPixels, double[] cropBox);
  [DllImport(Library, CallingConvention = C)]
  public static extern int findQORMulitFacesDUNInTread_TR02(byte[] imagePath, double[] results,
      ref int resultCount, int tileCol, int gridCols, int tileRow, int gridRows, out int tileWidth,
      out int tileHeight, out int tileLeft, out int tileTop, int modelKind, int slot, int maxSide,
      IntPtr reserved, out int width, out int height);
}
